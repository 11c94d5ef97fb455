#include "utility/platform/DebuggerSink.h"

#include "utility/platform/Debugger.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using utility::platform::Debugger;
using utility::platform::SetDebuggerSink;

namespace
{

std::vector<std::wstring> kept;
std::vector<std::wstring> keptByAnother;

void Keep(const wchar_t* text) { kept.emplace_back(text); }
void KeepAnother(const wchar_t* text) { keptByAnother.emplace_back(text); }

class DebuggerSinkTest : public ::testing::Test
{
protected:
    DebuggerSinkTest()
    {
        kept.clear();
        keptByAnother.clear();
    }
    void TearDown() override { SetDebuggerSink(nullptr); }
};

}

TEST_F(DebuggerSinkTest, TakesWideAndNarrowText)
{
    SetDebuggerSink(&Keep);
    Debugger().Output(L"90\u00B0\n");
    Debugger().Output("part.cpp(12)\n");
    Debugger().Output(L"");
    Debugger().Output("");
    EXPECT_EQ(kept, (std::vector<std::wstring>{L"90\u00B0\n", L"part.cpp(12)\n", std::wstring(), std::wstring()}));
}

TEST_F(DebuggerSinkTest, NewOneTakesOverAndTheEarlierIsReturned)
{
    EXPECT_EQ(SetDebuggerSink(&Keep), nullptr);
    EXPECT_EQ(SetDebuggerSink(&KeepAnother), &Keep);
    Debugger().Output(L"to the second");
    EXPECT_EQ(SetDebuggerSink(nullptr), &KeepAnother);
    EXPECT_EQ(kept.size(), 0u);
    EXPECT_EQ(keptByAnother, std::vector<std::wstring>{L"to the second"});
}
