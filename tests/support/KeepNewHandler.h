#pragma once

#include "utility/framework/internal/NewHandler.h"

#include <new>

namespace support
{

/// Puts the new-handlers of the process and of the framework back as they were.
class KeepNewHandler
{
public:
    KeepNewHandler() : m_handler(std::get_new_handler()), m_ofFramework(utility::framework::SetNewHandler(nullptr))
    {
        utility::framework::SetNewHandler(m_ofFramework);
    }
    KeepNewHandler(const KeepNewHandler&) = delete;
    KeepNewHandler& operator=(const KeepNewHandler&) = delete;
    ~KeepNewHandler()
    {
        std::set_new_handler(m_handler);
        utility::framework::SetNewHandler(m_ofFramework);
    }

private:
    std::new_handler m_handler;
    utility::platform::NewHandler m_ofFramework;
};

}
