#pragma once

#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

namespace support
{

/// What a cursor over the bytes of a record does, one step at a time and nothing clever.
class SlowInputCursor
{
public:
    void Add(const unsigned char* first, const unsigned char* last)
    {
        m_lines.emplace_back(first, last);
        Reset();
    }

    void Reset()
    {
        m_line = 0;
        m_current = m_lines.empty() ? nullptr : m_lines[0].first;
    }

    const unsigned char* Current() const { return m_current; }

    void Step()
    {
        if (m_current == nullptr)
            return;
        ++m_current;
        if (m_current != m_lines[m_line].second)
            return;
        ++m_line;
        m_current = m_line == m_lines.size() ? nullptr : m_lines[m_line].first;
    }

    void Advance(int count)
    {
        // At the end of the record all further steps are the same: nothing.
        for (auto left = static_cast<unsigned int>(count); left != 0 && m_current != nullptr; --left)
            Step();
    }

    bool Read(void* destination, int count)
    {
        if (m_current == nullptr || m_current + (count - 1) > m_lines[m_line].second)
            return false;
        if (count != 0)
            std::memcpy(destination, m_current, static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i)
            Step();
        return true;
    }

private:
    std::vector<std::pair<const unsigned char*, const unsigned char*>> m_lines;
    std::size_t m_line = 0;
    const unsigned char* m_current = nullptr;
};

}
