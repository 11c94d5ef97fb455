#include "utility/memory/NewHandler.h"

#include "tests/support/GlobalLocale.h"
#include "tests/support/KeepNewHandler.h"
#include "tests/support/RecordingDebugger.h"
#include "tests/support/TableMemory.h"
#include "tests/support/WithoutThreadSlot.h"
#include "utility/framework/internal/NewHandler.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <type_traits>

using utility::platform::QueryNewHandler;

static_assert(!std::is_copy_constructible_v<CNewHandler>);
static_assert(sizeof(CNewHandler) == 24);

namespace
{

using Texts = std::vector<std::string>;

int Earlier(std::size_t) { return 0; }
int EarlierOfFramework(std::size_t) { return 0; }

/// Without handlers.
class CNewHandlerTest : public ::testing::Test
{
protected:
    CNewHandlerTest()
    {
        utility::platform::SetNewHandler(nullptr);
        m_memory.Add(0x1000, MEM_FREE);
    }
    void TearDown() override { utility::framework::SetNewHandler(nullptr); }

    static utility::platform::NewHandler FrameworkHandler()
    {
        const auto handler = utility::framework::SetNewHandler(nullptr);
        utility::framework::SetNewHandler(handler);
        return handler;
    }

    /// What the handler says where memory for so many bytes is not to be had.
    static std::string TextFor(std::size_t size)
    {
        try
        {
            QueryNewHandler()(size);
        }
        catch (const std::bad_alloc& failure)
        {
            return failure.what();
        }
        return "nothing";
    }

    const support::KeepNewHandler m_keep;
    support::TableMemory m_memory;
    support::RecordingDebugger m_debugger;
};

}

TEST_F(CNewHandlerTest, IsInstalledForProcessAndFramework)
{
    const CNewHandler handler;
    EXPECT_NE(QueryNewHandler(), nullptr);
    EXPECT_EQ(FrameworkHandler(), QueryNewHandler());
}

TEST_F(CNewHandlerTest, FailureLineIsSentOnlyIfTheStatusCannotBeTrusted)
{
    const CNewHandler handler;
    EXPECT_EQ(TextFor(4711), "bad allocation");
    EXPECT_EQ(m_debugger.wide.size(), 1u);
    m_memory.statusFails = true;
    EXPECT_EQ(TextFor(4711), "bad allocation");
    EXPECT_EQ(m_debugger.wide.back(),
              L"new failed trying to service request for 4711 bytes. ullTotalVirtual: 0 ullAvailVirtual: 0\n");
    EXPECT_EQ(m_debugger.wide.size(), 3u);
}

TEST_F(CNewHandlerTest, FailureLineIsTheSameUnderAGlobalLocaleThatGroupsDigits)
{
    const CNewHandler handler;
    m_memory.statusFails = true;
    const support::GlobalLocale scope(support::GroupingLocale());
    TextFor(4711000);
    EXPECT_EQ(m_debugger.wide.back(),
              L"new failed trying to service request for 4711000 bytes. ullTotalVirtual: 0 ullAvailVirtual: 0\n");
}

TEST_F(CNewHandlerTest, StatusIsAskedForWithItsLengthForTheReportAndForTheLine)
{
    const CNewHandler handler;
    TextFor(1);
    EXPECT_EQ(m_memory.askedLength, 64u);
    EXPECT_EQ(m_memory.statusQueries, 2);
}

TEST_F(CNewHandlerTest, DebuggerThatIsPresentKeepsItOut)
{
    m_debugger.isPresent = true;
    const CNewHandler handler;
    EXPECT_EQ(QueryNewHandler(), nullptr);
    EXPECT_EQ(FrameworkHandler(), nullptr);
}

TEST_F(CNewHandlerTest, DebuggerIsAskedForAfreshThreeTimes)
{
    m_debugger.nextAnswers = {true, false, false};
    const CNewHandler handler;
    EXPECT_EQ(m_debugger.questions, 3);
    EXPECT_NE(QueryNewHandler(), nullptr);
    EXPECT_NE(FrameworkHandler(), nullptr);
}

TEST_F(CNewHandlerTest, EachHandlerHasItsOwnAnswer)
{
    {
        m_debugger.nextAnswers = {false, true, false};
        const CNewHandler frameworkOnly;
        EXPECT_EQ(QueryNewHandler(), nullptr);
        EXPECT_NE(utility::framework::SetNewHandler(nullptr), nullptr);
    }
    m_debugger.nextAnswers = {false, false, true};
    const CNewHandler processOnly;
    EXPECT_NE(QueryNewHandler(), nullptr);
    EXPECT_EQ(FrameworkHandler(), nullptr);
}

TEST_F(CNewHandlerTest, PreviousHandlersArePutBackWhereTheFirstAnswerWasADebugger)
{
    utility::platform::SetNewHandler(&Earlier);
    utility::framework::SetNewHandler(&EarlierOfFramework);
    m_debugger.nextAnswers = {true, false, false};
    {
        const CNewHandler handler;
        EXPECT_NE(QueryNewHandler(), &Earlier);
        EXPECT_NE(FrameworkHandler(), &EarlierOfFramework);
    }
    EXPECT_EQ(QueryNewHandler(), &Earlier);
    EXPECT_EQ(FrameworkHandler(), &EarlierOfFramework);
}

TEST_F(CNewHandlerTest, HandlerStaysInstalledAfterItsObjectIsGone)
{
    utility::platform::SetNewHandler(&Earlier);
    {
        const CNewHandler handler;
    }
    EXPECT_NE(QueryNewHandler(), &Earlier);
    EXPECT_EQ(FrameworkHandler(), QueryNewHandler());
    EXPECT_EQ(TextFor(1), "bad allocation");
}

TEST_F(CNewHandlerTest, WithADebuggerHandlersOfOthersAreRemovedAtTheEnd)
{
    utility::platform::SetNewHandler(&Earlier);
    utility::framework::SetNewHandler(&EarlierOfFramework);
    m_debugger.isPresent = true;
    {
        const CNewHandler handler;
        EXPECT_EQ(QueryNewHandler(), &Earlier);
    }
    EXPECT_EQ(QueryNewHandler(), nullptr);
    EXPECT_EQ(FrameworkHandler(), nullptr);
}

TEST_F(CNewHandlerTest, ThreadThatCannotBeMarkedAsReportingHasTheFailureWithoutAReport)
{
    const CNewHandler handler;
    const support::WithoutThreadSlot scope(utility::detail::reportingSlot);
    EXPECT_EQ(TextFor(24), "bad allocation");
    EXPECT_EQ(m_debugger.wide.size(), 0u);
    EXPECT_EQ(m_memory.statusQueries, 0);
}

// The sanitizers' own `new` ends the process instead.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
namespace
{

/// More than there ever is; the compiler must not see it.
std::size_t TooMuch()
{
    volatile std::size_t size = std::numeric_limits<std::ptrdiff_t>::max();
    return size;
}

}

TEST_F(CNewHandlerTest, NewThatCannotBeServedReportsTheAddressSpaceAndThrows)
{
    const CNewHandler handler;
    try
    {
        ::operator delete(::operator new(TooMuch()));
        FAIL() << "there was enough memory";
    }
    catch (const std::bad_alloc& failure)
    {
        EXPECT_STREQ(failure.what(), "bad allocation");
    }
    EXPECT_EQ(m_debugger.wide.size(), 1u);
    EXPECT_EQ(m_debugger.narrow,
              (Texts{"0x00000000 0x00000fff 0x00001000 MEM_FREE\n", "Total free memory: 0x1000 [4096] bytes\n",
                     "Largest free block: 0x1000 [4096] bytes\n"}));
}

TEST_F(CNewHandlerTest, NewThatMayFailGivesNullBehindTheReport)
{
    const CNewHandler handler;
    EXPECT_EQ(::operator new(TooMuch(), std::nothrow), nullptr);
    EXPECT_EQ(m_debugger.narrow.size(), 3u);
}

TEST_F(CNewHandlerTest, MemoryThatRunsOutDuringTheReportIsTheSameFailureAndTheNextReportIsWhole)
{
    struct Exhausted : support::TableMemory
    {
        std::unique_ptr<utility::platform::AddressSpace> OpenAddressSpace() override
        {
            ::operator delete(::operator new(TooMuch()));
            return nullptr;
        }
    };
    const CNewHandler handler;
    {
        const Exhausted exhausted;
        EXPECT_EQ(TextFor(24), "bad allocation");
    }
    EXPECT_EQ(m_debugger.wide.size(), 1u);
    EXPECT_EQ(m_debugger.narrow, Texts());
    EXPECT_EQ(TextFor(24), "bad allocation");
    EXPECT_EQ(m_debugger.narrow.size(), 3u);
}

TEST_F(CNewHandlerTest, NewThatCannotBeServedReachesNoHandlerWithADebugger)
{
    m_debugger.isPresent = true;
    const CNewHandler handler;
    EXPECT_THROW(::operator delete(::operator new(TooMuch())), std::bad_alloc);
    EXPECT_EQ(m_debugger.narrow, Texts());
}
#endif
