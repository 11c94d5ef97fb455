#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/Debugger.h"

#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace support
{

/// Stands in for the debugger while it lives, and keeps what it is sent.
class RecordingDebugger : public utility::platform::DebuggerService
{
public:
    bool IsPresent() override
    {
        ++questions;
        if (!nextAnswers.empty())
        {
            isPresent = nextAnswers.front();
            nextAnswers.pop_front();
        }
        return isPresent;
    }
    void Break() override { ++breaks; }
    void NameThread(DWORD thread, const char* name) override { names.emplace_back(thread, name); }
    void Output(const wchar_t* text) override { wide.emplace_back(text); }
    void Output(const char* text) override { narrow.emplace_back(text); }

    bool isPresent = false;
    std::deque<bool> nextAnswers; ///< `isPresent` from one question to the next
    int questions = 0;
    int breaks = 0;
    std::vector<std::pair<DWORD, std::string>> names;
    std::vector<std::wstring> wide;
    std::vector<std::string> narrow;

private:
    Substitute<utility::platform::DebuggerService> m_scope{utility::platform::DebuggerSlot(), *this};
};

}
