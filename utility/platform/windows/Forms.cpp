#include "utility/platform/Forms.h"

#include <string>

namespace utility::platform
{

WindowForm::WindowForm(HWND dialog) : m_dialog(dialog) {}

bool WindowForm::HasField(int id) { return ::GetDlgItem(m_dialog, id) != nullptr; }

void WindowForm::Text(int id, wchar_t* buffer, int size)
{
    *buffer = L'\0';
    ::GetWindowTextW(::GetDlgItem(m_dialog, id), buffer, size);
}

void WindowForm::SetText(int id, const wchar_t* text) { ::SetWindowTextW(::GetDlgItem(m_dialog, id), text); }

void WindowForm::Focus(int id)
{
    const HWND field = ::GetDlgItem(m_dialog, id);
    ::SetFocus(field);
    ::SendMessageW(field, EM_SETSEL, 0, -1);
}

void WindowForm::ShowBox(const wchar_t* text, UINT style, int /*helpTopic*/)
{
    std::wstring title(static_cast<std::size_t>(::GetWindowTextLengthW(m_dialog)), L'\0');
    ::GetWindowTextW(m_dialog, title.data(), static_cast<int>(title.size()) + 1);
    ::MessageBoxW(m_dialog, text, title.c_str(), style);
}

}
