#include "utility/logging/LogMessages.h"

#include "tests/support/LogSettings.h"
#include "tests/support/posix/Threads.h"
#include "utility/logging/LogStream.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>

TEST(LogForkThreadTest, ChildLogsWhileThreadsDo)
{
    const support::LogSettings settings;
    static char owners[300];
    const auto log = []
    {
        thread_local std::size_t next = 0;
        LogFile(LogSeverityError, &owners[next++ % std::size(owners)]) << L"Number " << 0.5;
        return true;
    };
    const auto logAndCollect = []
    {
        const char own = 0;
        LogFile(LogSeverityError, &own) << "text";
        boost::circular_buffer_space_optimized<CLogMessage> messages;
        CLogMessages::instance(&own).pop(messages);
        for (const char& owner : owners)
            CLogMessages::instance(&owner).push(LogSeverityError, L"text");
        return messages.size() == 1;
    };
    support::ExpectChildrenOfThreadsToWork(log, logAndCollect);
}
