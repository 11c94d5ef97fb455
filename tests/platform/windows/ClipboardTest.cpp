#include "utility/platform/Clipboard.h"

#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <string>

using support::ImportedCall;
using utility::platform::Clipboard;

extern "C" decltype(&::CloseClipboard) __imp_CloseClipboard;
extern "C" decltype(&::EmptyClipboard) __imp_EmptyClipboard;
extern "C" decltype(&::GlobalAlloc) __imp_GlobalAlloc;
extern "C" decltype(&::GlobalFree) __imp_GlobalFree;
extern "C" decltype(&::GlobalLock) __imp_GlobalLock;
extern "C" decltype(&::GlobalUnlock) __imp_GlobalUnlock;
extern "C" decltype(&::OpenClipboard) __imp_OpenClipboard;
extern "C" decltype(&::SetClipboardData) __imp_SetClipboardData;

namespace
{

/// The steps of a text's way to the clipboard, of which one fails.
struct
{
    std::string calls;
    std::string failing;
    UINT flags;
    SIZE_T size;
    HWND owner;
    UINT format;
    HANDLE given;
    wchar_t memory[64];

    bool Succeeds(const char* call)
    {
        calls += std::string(call) + ' ';
        return failing != call;
    }
} way;

class ClipboardStepsTest : public testing::Test
{
protected:
    bool SetWithout(const char* failing)
    {
        way = {};
        way.failing = failing;
        return Clipboard().SetText(L"N10 \u20AC");
    }

private:
    const ImportedCall<decltype(__imp_GlobalAlloc)> m_alloc{__imp_GlobalAlloc,
                                                            [](UINT flags, SIZE_T size) -> HGLOBAL
                                                            {
                                                                way.flags = flags;
                                                                way.size = size;
                                                                return way.Succeeds("alloc") ? &way : nullptr;
                                                            }};
    const ImportedCall<decltype(__imp_GlobalLock)> m_lock{
        __imp_GlobalLock, [](HGLOBAL) -> LPVOID { return way.Succeeds("lock") ? way.memory : nullptr; }};
    const ImportedCall<decltype(__imp_GlobalUnlock)> m_unlock{__imp_GlobalUnlock,
                                                              [](HGLOBAL) -> BOOL { return way.Succeeds("unlock"); }};
    const ImportedCall<decltype(__imp_GlobalFree)> m_free{__imp_GlobalFree,
                                                          [](HGLOBAL) -> HGLOBAL
                                                          {
                                                              way.Succeeds("free");
                                                              return nullptr;
                                                          }};
    const ImportedCall<decltype(__imp_OpenClipboard)> m_open{__imp_OpenClipboard,
                                                             [](HWND owner) -> BOOL
                                                             {
                                                                 way.owner = owner;
                                                                 return way.Succeeds("open");
                                                             }};
    const ImportedCall<decltype(__imp_EmptyClipboard)> m_empty{__imp_EmptyClipboard,
                                                               []() -> BOOL { return way.Succeeds("empty"); }};
    const ImportedCall<decltype(__imp_SetClipboardData)> m_set{__imp_SetClipboardData,
                                                               [](UINT format, HANDLE memory) -> HANDLE
                                                               {
                                                                   way.format = format;
                                                                   way.given = memory;
                                                                   return way.Succeeds("set") ? memory : nullptr;
                                                               }};
    const ImportedCall<decltype(__imp_CloseClipboard)> m_close{__imp_CloseClipboard,
                                                               []() -> BOOL { return way.Succeeds("close"); }};
};

}

TEST_F(ClipboardStepsTest, TextIsGivenInMovableMemoryAsUnicode)
{
    EXPECT_TRUE(SetWithout(""));
    EXPECT_EQ(way.calls, "alloc lock unlock open empty set close ");
    EXPECT_EQ(way.flags, 2u);
    EXPECT_EQ(way.size, 12u);
    EXPECT_EQ(way.memory, std::wstring(L"N10 \u20AC"));
    EXPECT_EQ(way.owner, nullptr);
    EXPECT_EQ(way.format, 13u);
    EXPECT_EQ(way.given, &way);
}

TEST_F(ClipboardStepsTest, MemoryIsDeliberatelyLostWhereAStepFails)
{
    EXPECT_FALSE(SetWithout("alloc"));
    EXPECT_EQ(way.calls, "alloc ");
    EXPECT_FALSE(SetWithout("lock"));
    EXPECT_EQ(way.calls, "alloc lock ");
    EXPECT_FALSE(SetWithout("open"));
    EXPECT_EQ(way.calls, "alloc lock unlock open ");
}

TEST_F(ClipboardStepsTest, ClipboardIsClosedInAnyCase)
{
    EXPECT_FALSE(SetWithout("empty"));
    EXPECT_EQ(way.calls, "alloc lock unlock open empty close ");
    EXPECT_FALSE(SetWithout("set"));
    EXPECT_EQ(way.calls, "alloc lock unlock open empty set close ");
}

TEST(WindowsClipboardTest, TextCanBePasted)
{
    for (const std::wstring text : {L"N10 \u20AC\n", L"", L"second"})
    {
        ASSERT_TRUE(Clipboard().SetText(text.c_str()));
        ASSERT_NE(::OpenClipboard(nullptr), FALSE);
        const HANDLE memory = ::GetClipboardData(CF_UNICODETEXT);
        ASSERT_NE(memory, nullptr);
        EXPECT_EQ(static_cast<const wchar_t*>(::GlobalLock(memory)), text);
        ::GlobalUnlock(memory);
        ::CloseClipboard();
    }
    const std::wstring longText(1'000'000, L'x');
    EXPECT_TRUE(Clipboard().SetText(longText.c_str()));
}
