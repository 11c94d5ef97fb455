#include "tests/support/GuardedText.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <new>

namespace support
{

GuardedText::GuardedText(std::string_view text, Touches touches) : m_size(text.size())
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t room = (text.size() + page - 1) / page * page;
    m_pagesSize = room + 2 * page;
    void* const pages = mmap(nullptr, m_pagesSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        throw std::bad_alloc();
    m_pages = static_cast<char*>(pages);
    if (mprotect(m_pages + page, room, PROT_READ | PROT_WRITE) != 0)
    {
        munmap(m_pages, m_pagesSize);
        throw std::bad_alloc();
    }
    m_first = m_pages + page + (touches == Touches::pageBehind ? room - m_size : 0);
    std::memcpy(m_first, text.data(), m_size);
}

GuardedText::~GuardedText() { munmap(m_pages, m_pagesSize); }

}
