// The dialog of the tool, on Windows.

#include "examples/units/Tool.h"

using utility::platform::WindowForm;

namespace
{

void Add(HWND dialog, const wchar_t* kind, const wchar_t* text, DWORD style, int id, RECT place, DWORD edge = 0)
{
    ::MapDialogRect(dialog, &place);
    const HWND control = ::CreateWindowExW(edge, kind, text, WS_CHILD | WS_VISIBLE | style, place.left, place.top,
                                           place.right, place.bottom, dialog,
                                           reinterpret_cast<HMENU>(static_cast<std::intptr_t>(id)), nullptr, nullptr);
    ::SendMessageW(control, WM_SETFONT, static_cast<WPARAM>(::SendMessageW(dialog, WM_GETFONT, 0, 0)), 0);
}

void Fill(HWND dialog, const Tool& tool)
{
    LONG top = 8;
    for (const auto& field : ToolFields())
    {
        Add(dialog, L"STATIC", field.label.c_str(), SS_LEFT, -1, {8, top + 2, 80, 10});
        Add(dialog, L"EDIT", L"", WS_TABSTOP | ES_AUTOHSCROLL, field.id, {92, top, 60, 12}, WS_EX_CLIENTEDGE);
        top += 18;
    }
    Add(dialog, L"BUTTON", L"OK", WS_TABSTOP | BS_DEFPUSHBUTTON, IDOK, {38, top + 2, 54, 14});
    Add(dialog, L"BUTTON", L"Cancel", WS_TABSTOP, IDCANCEL, {98, top + 2, 54, 14});
    WindowForm form(dialog);
    Show(form, tool);
    form.Focus(diameterField);
}

INT_PTR CALLBACK Handle(HWND dialog, UINT message, WPARAM which, LPARAM parameter)
{
    if (message == WM_INITDIALOG)
    {
        ::SetWindowLongPtrW(dialog, DWLP_USER, parameter);
        Fill(dialog, *reinterpret_cast<const Tool*>(parameter));
        return FALSE; // the focus is where it is to be
    }
    if (message != WM_COMMAND)
        return FALSE;
    WindowForm form(dialog);
    if (LOWORD(which) == IDCANCEL ||
        (LOWORD(which) == IDOK && Save(form, *reinterpret_cast<Tool*>(::GetWindowLongPtrW(dialog, DWLP_USER)))))
        ::EndDialog(dialog, LOWORD(which));
    return TRUE;
}

}

bool EditInDialog(Tool& tool)
{
    struct alignas(4)
    {
        DLGTEMPLATE head;
        WORD menu;
        WORD windowClass;
        wchar_t title[5];
        WORD points;
        wchar_t font[14];
    } const dialog{{DS_SETFONT | DS_MODALFRAME | DS_CENTER | WS_POPUP | WS_CAPTION | WS_SYSMENU, 0, 0, 0, 0, 160, 84},
                   0,
                   0,
                   L"Tool",
                   8,
                   L"MS Shell Dlg"};
    return ::DialogBoxIndirectParamW(nullptr, &dialog.head, nullptr, &Handle, reinterpret_cast<LPARAM>(&tool)) == IDOK;
}
