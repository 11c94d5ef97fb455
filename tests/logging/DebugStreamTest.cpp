#include "utility/logging/DebugStream.h"

#include "tests/support/RecordingDebugger.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <string>
#include <type_traits>
#include <vector>

static_assert(std::is_base_of_v<std::basic_ostream<wchar_t>, DebugStream>);
static_assert(std::has_virtual_destructor_v<DebugStream>);
static_assert(std::is_base_of_v<std::basic_stringbuf<wchar_t>, DebugStream::DebugStreamBuf>);
static_assert(sizeof(DebugStream::DebugStreamBuf) == sizeof(std::basic_stringbuf<wchar_t>));
static_assert(sizeof(DebugStreamHelper) == sizeof(DebugStream));

namespace
{

class DebugStreamTest : public ::testing::Test
{
protected:
    using Texts = std::vector<std::wstring>;

    const Texts& Sent() const { return m_debugger.wide; }

private:
    support::RecordingDebugger m_debugger;
};

}

TEST_F(DebugStreamTest, UnusedStreamSendsOneEmptyText)
{
    dbg();
    EXPECT_EQ(Sent(), Texts(1));
}

TEST_F(DebugStreamTest, TextIsSentOnceAndGetsNoLineFeed)
{
    dbg() << L"radius " << 2.5 << L' ' << std::string("mm").c_str();
    EXPECT_EQ(Sent(), Texts{L"radius 2.5 mm"});
}

TEST_F(DebugStreamTest, FlushSendsWhatIsThereAndTheEndAnEmptyText)
{
    dbg() << L"a" << std::flush << L"b" << std::endl;
    EXPECT_EQ(Sent(), (Texts{L"a", L"b\n", std::wstring()}));
}

TEST_F(DebugStreamTest, TextEndsAtItsFirstNullAndTheRestIsLost)
{
    dbg() << std::wstring(L"ab\0cd", 5);
    EXPECT_EQ(Sent(), Texts{L"ab"});
}

TEST_F(DebugStreamTest, ManipulatorsActAsOnAnyStream)
{
    const DebugStreamHelper helper;
    const DebugStreamHelper& same = helper << std::hex << 255 << std::setw(4) << L"x" << std::flush;
    EXPECT_EQ(&same, &helper);
    EXPECT_EQ(Sent(), Texts{L"ff   x"});
}

TEST_F(DebugStreamTest, StreamOfItsOwnSendsWhatIsLeftWhenItDies)
{
    {
        DebugStream stream;
        stream << L"left";
        EXPECT_TRUE(Sent().empty());
    }
    EXPECT_EQ(Sent(), Texts{L"left"});
}
