#include "utility/framework/TerminalForm.h"

#include <gtest/gtest.h>

#include <ext/stdio_sync_filebuf.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <istream>
#include <sstream>
#include <string>
#include <thread>

#include <pthread.h>
#include <unistd.h>

namespace
{

void Ignore(int) {}

}

TEST(PosixTerminalFormTest, SignalIsNotTheEndOfTheInput)
{
    struct sigaction earlier
    {
    };
    struct sigaction interrupting
    {
    };
    interrupting.sa_handler = Ignore;
    ASSERT_EQ(::sigaction(SIGUSR1, &interrupting, &earlier), 0);
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    std::FILE* const file = ::fdopen(ends[0], "r");
    __gnu_cxx::stdio_sync_filebuf<char> buffer(file); // as std::cin has it
    std::istream in(&buffer);
    std::ostringstream out;
    utility::framework::TerminalForm form(in, out, {{1, L"Diameter"}});

    std::thread user(
        [reader = ::pthread_self(), typed = ends[1]]
        {
            EXPECT_EQ(::write(typed, "1", 1), 1);
            for (int i = 0; i < 5; ++i)
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                ::pthread_kill(reader, SIGUSR1);
            }
            EXPECT_EQ(::write(typed, "2\n", 2), 2);
            ::close(typed);
        });
    EXPECT_TRUE(form.Edit());
    user.join();
    wchar_t text[10];
    form.Text(1, text, 10);
    EXPECT_STREQ(text, L"12");
    EXPECT_FALSE(form.Edit());
    std::fclose(file);
    ::sigaction(SIGUSR1, &earlier, nullptr);
}
