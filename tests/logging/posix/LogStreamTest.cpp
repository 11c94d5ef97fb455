#include "utility/logging/LogStream.h"

#include "tests/support/LogSettings.h"
#include "tests/support/posix/FailingCall.h"
#include "utility/logging/LogMessages.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <type_traits>

namespace
{

using support::FailingCall;

static_assert(!std::is_nothrow_destructible_v<CLogStreamHelper> && std::is_nothrow_destructible_v<CLogStream>);

/// The first message for an owner needs memory for a store, of which there is none here.
class LogWithoutMemoryTest : public ::testing::Test
{
protected:
    std::wstring Stored() const
    {
        boost::circular_buffer_space_optimized<CLogMessage> messages;
        CLogMessages::instance(m_owner).pop(messages);
        std::wstring text;
        for (const CLogMessage& message : messages)
            text += message.m_strMessage;
        return text;
    }

    /// That `write` fails for lack of memory, which is not there for good, and that what is written next is all there
    /// is.
    template <class Write>
    void ExpectFailure(Write write)
    {
        {
            const FailingCall failing("operator new", 0, FailingCall::always);
            EXPECT_THROW(write(), std::bad_alloc);
            EXPECT_TRUE(failing.HasFailed());
        }
        LogFile(LogSeverityError, m_owner) << L"next";
        EXPECT_EQ(Stored(), L"next\n");
    }

    const void* const m_owner = support::NewOwner();

private:
    support::LogSettings m_settings;
};

}

TEST_F(LogWithoutMemoryTest, TextThatCannotBeStoredThrowsOutOfItsStatement)
{
    ExpectFailure([this] { LogFile(LogSeverityError, m_owner) << L"lost " << 1; });
}

TEST_F(LogWithoutMemoryTest, FormattedValueThatCannotBeStoredThrowsOutOfItsStatement)
{
    ExpectFailure([this] { LogFile(LogSeverityError, m_owner) << L"lost " << 1.5; });
}

TEST_F(LogWithoutMemoryTest, FlushedTextThatCannotBeStoredThrowsAndIsNotStoredLater)
{
    CLogStreamHelper stream(m_owner, LogSeverityError);
    ExpectFailure([&stream] { stream << L"lost" << std::endl; });
}

TEST_F(LogWithoutMemoryTest, FlushedValueThatCannotBeStoredThrowsAndIsNotStoredLater)
{
    CLogStreamHelper stream(m_owner, LogSeverityError);
    ExpectFailure([&stream] { stream << 1.5 << std::endl; });
}

TEST_F(LogWithoutMemoryTest, StreamGoesOnEmptyAfterAFailure)
{
    {
        CLogStreamHelper stream(m_owner, LogSeverityError);
        ExpectFailure([&stream] { stream << 1.5 << std::flush; });
        stream << L"more";
    }
    EXPECT_EQ(Stored(), L"more\n");
}

TEST_F(LogWithoutMemoryTest, WhileAnotherExceptionIsOnItsWayTheMessageIsDropped)
{
    for (const double value : {1.0, 1.5})
    {
        const auto throwAnother = [this, value]
        {
            const FailingCall failing("operator new", 0, FailingCall::always);
            CLogStreamHelper stream(m_owner, LogSeverityError);
            value == 1.0 ? stream << L"lost" : stream << value;
            throw 7;
        };
        EXPECT_THROW(throwAnother(), int);
    }
    EXPECT_EQ(Stored(), L"");
}

TEST_F(LogWithoutMemoryTest, StreamWithoutAHelperDropsItsMessage)
{
    {
        const FailingCall failing("operator new", 0, FailingCall::always);
        CLogStream(m_owner, LogSeverityError) << L"lost " << 1.5;
        EXPECT_TRUE(failing.HasFailed());
    }
    EXPECT_EQ(Stored(), L"");
}
