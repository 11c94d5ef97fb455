#pragma once

#include "utility/platform/ProcessorMethods.h"

namespace support
{

/// A method in place of the fastest one.
template <class Method>
class ForcedMethod
{
public:
    ForcedMethod(utility::platform::ProcessorMethods<Method>& methods, const Method& method)
        : m_methods(methods), m_earlier(methods.Take(method))
    {
    }
    ForcedMethod(const ForcedMethod&) = delete;
    ForcedMethod& operator=(const ForcedMethod&) = delete;
    ~ForcedMethod() { m_methods.Take(m_earlier); }

private:
    utility::platform::ProcessorMethods<Method>& m_methods;
    const Method& m_earlier;
};

}
