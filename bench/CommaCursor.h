#pragma once

#include "utility/records/TextRecordPtr.h"

/// Fields that end in commas. Its test is out of the reader's sight, as that of a user's format is.
class CommaCursor final : public CTextRecordPtr
{
public:
    using CTextRecordPtr::CTextRecordPtr;
    bool IsTerminator(char c) override;
};
