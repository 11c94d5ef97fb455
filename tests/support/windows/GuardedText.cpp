#include "tests/support/GuardedText.h"

#include <windows.h>

#include <cstring>
#include <new>

namespace support
{

GuardedText::GuardedText(std::string_view text, Touches touches) : m_size(text.size())
{
    SYSTEM_INFO system;
    ::GetSystemInfo(&system);
    const std::size_t page = system.dwPageSize;
    const std::size_t room = (text.size() + page - 1) / page * page;
    m_pagesSize = room + 2 * page;
    m_pages = static_cast<char*>(::VirtualAlloc(nullptr, m_pagesSize, MEM_RESERVE, PAGE_NOACCESS));
    if (m_pages == nullptr)
        throw std::bad_alloc();
    // There is no room of no size to the system.
    if (room != 0 && ::VirtualAlloc(m_pages + page, room, MEM_COMMIT, PAGE_READWRITE) == nullptr)
    {
        ::VirtualFree(m_pages, 0, MEM_RELEASE);
        throw std::bad_alloc();
    }
    m_first = m_pages + page + (touches == Touches::pageBehind ? room - m_size : 0);
    std::memcpy(m_first, text.data(), m_size);
}

GuardedText::~GuardedText() { ::VirtualFree(m_pages, 0, MEM_RELEASE); }

}
