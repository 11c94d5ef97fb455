#pragma once

#include "utility/platform/Export.h"

/// The root of the framework's classes.
class UTILITY_API CObject
{
public:
    virtual ~CObject();

protected:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
};
