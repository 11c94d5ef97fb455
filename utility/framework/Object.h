#pragma once

// The root of the framework's classes, which is there to be derived from.

#include "utility/platform/Export.h"

/// The root of the framework's classes.
class UTILITY_API CObject
{
public:
    /// An object may be deleted as one of this class.
    virtual ~CObject();

protected:
    /// For what derives from it.
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
};
