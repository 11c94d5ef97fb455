#pragma once

#include "utility/platform/Types.h"

namespace utility::platform::windows
{

/// For the length of a scope the calling thread loads, and makes windows, as the manifest of this module asks for it.
class ModulesContext
{
public:
    ModulesContext() : m_isActive(::ActivateActCtx(OfThisModule(), &m_cookie) != FALSE) {}
    ModulesContext(const ModulesContext&) = delete;
    ModulesContext& operator=(const ModulesContext&) = delete;
    /// The reason of a failure in the scope stays what it is.
    ~ModulesContext()
    {
        const DWORD reason = ::GetLastError();
        if (m_isActive)
            ::DeactivateActCtx(0, m_cookie);
        ::SetLastError(reason);
    }

private:
    static inline const char addressInThisModule = 0;

    /// Null, which is that of the process, for a module without a manifest.
    static HANDLE OfThisModule()
    {
        ACTIVATION_CONTEXT_BASIC_INFORMATION context = {};
        ::QueryActCtxW(QUERY_ACTCTX_FLAG_ACTCTX_IS_ADDRESS | QUERY_ACTCTX_FLAG_NO_ADDREF,
                       const_cast<char*>(&addressInThisModule), nullptr, ActivationContextBasicInformation, &context,
                       sizeof(context), nullptr);
        return context.hActCtx;
    }

    ULONG_PTR m_cookie = 0;
    bool m_isActive;
};

}
