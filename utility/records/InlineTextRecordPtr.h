#pragma once

// The text cursor for formats whose tests can be inlined. CTextRecordPtr makes a virtual call for each test; a format
// that derives from CInlineTextRecordPtr has the same algorithm compiled for itself, without a call per character:
//
//     class CommaCursor final : public CInlineTextRecordPtr<CommaCursor>
//     {
//     public:
//         using CInlineTextRecordPtr::CInlineTextRecordPtr;
//         bool IsTerminator(char c) override { return c == ',' || c == '\n' || c == '\0'; }
//     };

#include "utility/records/TextRecordPtr.h"

/// A text cursor whose reads call the tests of `Format`, the final class derived from it, directly. It behaves as one
/// derived from CTextRecordPtr, and is one.
template <class Format>
class CInlineTextRecordPtr : public CTextRecordPtr
{
public:
    using CTextRecordPtr::CTextRecordPtr;

    /// CTextRecordPtr's reads, with the same results.
    bool ReadInt(int& value) { return ReadIntAs<Format>(value); }
    bool ReadReal(double& value) { return ReadRealAs<Format>(value); }
    bool ReadReals(std::span<double> values, char separator, std::size_t& count, std::span<TextFieldForm> forms = {})
    {
        return ReadRunAs<Format>(values, separator, count, forms);
    }
    /// The same.
    bool ReadInts(std::span<int> values, char separator, std::size_t& count)
    {
        return ReadRunAs<Format>(values, separator, count, {});
    }
};
