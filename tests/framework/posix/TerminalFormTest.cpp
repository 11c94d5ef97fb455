#include "utility/framework/TerminalForm.h"

#include <gtest/gtest.h>

#include <ext/stdio_sync_filebuf.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <istream>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>

#include <pthread.h>
#include <unistd.h>

namespace
{

void Ignore(int) {}

/// What is in a field for which 1 is typed, and the rest behind signals that interrupt the reading.
std::wstring FieldOf(std::string_view rest)
{
    struct sigaction earlier = {};
    struct sigaction interrupting = {};
    interrupting.sa_handler = Ignore;
    EXPECT_EQ(::sigaction(SIGUSR1, &interrupting, &earlier), 0);
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    std::FILE* const file = ::fdopen(ends[0], "r");
    __gnu_cxx::stdio_sync_filebuf<char> buffer(file); // as std::cin has it
    std::istream in(&buffer);
    std::ostringstream out;
    utility::framework::TerminalForm form(in, out, {{1, L"Diameter"}});

    std::thread user(
        [reader = ::pthread_self(), typed = ends[1], rest]
        {
            EXPECT_EQ(::write(typed, "1", 1), 1);
            for (int i = 0; i < 5; ++i)
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                ::pthread_kill(reader, SIGUSR1);
            }
            EXPECT_EQ(::write(typed, rest.data(), rest.size()), static_cast<ssize_t>(rest.size()));
            ::close(typed);
        });
    EXPECT_TRUE(form.Edit());
    user.join();
    wchar_t text[10];
    form.Text(1, text, 10);
    EXPECT_FALSE(form.Edit());
    std::fclose(file);
    ::sigaction(SIGUSR1, &earlier, nullptr);
    return text;
}

}

TEST(PosixTerminalFormTest, SignalIsNotTheEndOfTheInput)
{
    EXPECT_EQ(FieldOf("2\n"), L"12");
    EXPECT_EQ(FieldOf(""), L"1");
}
