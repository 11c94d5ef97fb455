#pragma once

#include <new>

namespace support
{

/// Puts the process's new-handler back as it was.
class KeepNewHandler
{
public:
    KeepNewHandler() : m_handler(std::get_new_handler()) {}
    KeepNewHandler(const KeepNewHandler&) = delete;
    KeepNewHandler& operator=(const KeepNewHandler&) = delete;
    ~KeepNewHandler() { std::set_new_handler(m_handler); }

private:
    std::new_handler m_handler;
};

}
