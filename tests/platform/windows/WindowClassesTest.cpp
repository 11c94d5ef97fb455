#include "utility/platform/WindowClasses.h"

#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <string>

using support::ImportedCall;
using utility::platform::WindowClasses;

extern "C" decltype(&::ActivateActCtx) __imp_ActivateActCtx;
extern "C" decltype(&::DeactivateActCtx) __imp_DeactivateActCtx;
extern "C" decltype(&::CreateWindowExW) __imp_CreateWindowExW;
extern "C" decltype(&::DestroyWindow) __imp_DestroyWindow;
extern "C" decltype(&::GetClassLongW) __imp_GetClassLongW;

TEST(WindowsWindowClassesTest, AtomIsTheOneThatTheClassWasRegisteredWith)
{
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = &::DefWindowProcW;
    windowClass.lpszClassName = L"UtilityTests tool";
    const ATOM atom = ::RegisterClassW(&windowClass);
    ASSERT_NE(atom, 0);
    EXPECT_EQ(WindowClasses().Atom(L"UtilityTests tool"), atom);
    EXPECT_EQ(::FindWindowW(L"UtilityTests tool", nullptr), nullptr) << "its window is gone";
    ::UnregisterClassW(L"UtilityTests tool", nullptr);
}

TEST(WindowsWindowClassesTest, WindowHasNothingAndIsDestroyed)
{
    static std::wstring name;
    static bool isPlain;
    static int index;
    static HWND destroyed;
    destroyed = nullptr;
    static std::string contexts;
    contexts.clear();
    const ImportedCall activate(__imp_ActivateActCtx,
                                [](HANDLE, ULONG_PTR*)
                                {
                                    contexts += "activate ";
                                    return TRUE;
                                });
    const ImportedCall deactivate(__imp_DeactivateActCtx,
                                  [](DWORD, ULONG_PTR)
                                  {
                                      contexts += "deactivate ";
                                      return TRUE;
                                  });
    const auto create = [](DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style, int x, int y, int width,
                           int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID argument) -> HWND
    {
        contexts += "create ";
        name = className;
        isPlain = extendedStyle == 0 && title == nullptr && style == 0 && x == 0 && y == 0 && width == 0 &&
                  height == 0 && parent == nullptr && menu == nullptr && instance == nullptr && argument == nullptr;
        return reinterpret_cast<HWND>(std::intptr_t{0x1000});
    };
    const ImportedCall createCall(__imp_CreateWindowExW, create);
    const ImportedCall longCall(__imp_GetClassLongW,
                                [](HWND, int of) -> DWORD
                                {
                                    index = of;
                                    return 0xABCDC017;
                                });
    const ImportedCall destroyCall(__imp_DestroyWindow,
                                   [](HWND window) -> BOOL
                                   {
                                       destroyed = window;
                                       return TRUE;
                                   });
    EXPECT_EQ(WindowClasses().Atom(L"Edit"), 0xC017);
    EXPECT_EQ(name, L"Edit");
    EXPECT_TRUE(isPlain);
    EXPECT_EQ(index, -32);
    EXPECT_EQ(destroyed, reinterpret_cast<HWND>(std::intptr_t{0x1000}));
    EXPECT_EQ(contexts, "activate create deactivate ");
}
