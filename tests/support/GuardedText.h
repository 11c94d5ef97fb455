#pragma once

#include <cstddef>
#include <string_view>

namespace support
{

/// A copy of a text in memory of its own, with inaccessible pages around it. The text touches the page behind it, or
/// the one in front of it: reading a single byte further ends the process.
class GuardedText
{
public:
    enum class Touches
    {
        pageBehind,
        pageInFront,
    };

    GuardedText(std::string_view text, Touches touches);
    GuardedText(const GuardedText&) = delete;
    GuardedText& operator=(const GuardedText&) = delete;
    ~GuardedText();

    const char* First() const { return m_first; }
    const char* Last() const { return m_first + m_size - 1; }

private:
    char* m_pages;
    std::size_t m_pagesSize;
    char* m_first;
    std::size_t m_size;
};

}
