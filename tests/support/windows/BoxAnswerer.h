#pragma once

#include "utility/platform/Types.h"

#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace support
{

/// Waits for a message box of this process, reads it, lets a test look at it, and presses one of its buttons.
class BoxAnswerer
{
public:
    using Look = std::function<void(HWND)>;

    explicit BoxAnswerer(
        int button, Look look = [](HWND) {})
        : m_thread([this, button, look = std::move(look)] { Answer(button, look); })
    {
    }
    BoxAnswerer(const BoxAnswerer&) = delete;
    BoxAnswerer& operator=(const BoxAnswerer&) = delete;
    ~BoxAnswerer() { Wait(); }

    std::wstring Title()
    {
        Wait();
        return m_title;
    }
    std::wstring Text()
    {
        Wait();
        return m_text;
    }
    HWND Owner()
    {
        Wait();
        return m_owner;
    }

private:
    static constexpr int textControl = 0xFFFF; // which a dialog of a test's own does not have

    static BOOL CALLBACK IsBox(HWND window, LPARAM found)
    {
        wchar_t name[16];
        DWORD process = 0;
        ::GetWindowThreadProcessId(window, &process);
        if (process != ::GetCurrentProcessId() || !::IsWindowVisible(window) ||
            ::GetClassNameW(window, name, 16) == 0 || std::wstring_view(name) != L"#32770" ||
            ::GetDlgItem(window, textControl) == nullptr)
            return TRUE;
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }

    static std::wstring TextOf(HWND window)
    {
        wchar_t text[4096];
        return {text, static_cast<std::size_t>(::GetWindowTextW(window, text, 4096))};
    }

    void Answer(int button, const Look& look)
    {
        HWND box = nullptr;
        for (int i = 0; i < 10000 && box == nullptr; ++i)
        {
            ::Sleep(10);
            ::EnumWindows(&IsBox, reinterpret_cast<LPARAM>(&box));
        }
        m_title = TextOf(box);
        m_text = TextOf(::GetDlgItem(box, textControl));
        m_owner = ::GetWindow(box, GW_OWNER);
        look(box);
        ::PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    }

    void Wait()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    std::wstring m_title;
    std::wstring m_text;
    HWND m_owner = nullptr;
    std::thread m_thread;
};

}
