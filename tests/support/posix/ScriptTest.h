#pragma once

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/formats/CommandLine.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/time.h>
#include <sys/types.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace support
{

/// The command line that has the shell run a script.
inline std::wstring ScriptLine(const std::string& script)
{
    return utility::platform::formats::JoinCommandLine({L"sh", L"-c", std::wstring(script.begin(), script.end())});
}

/// Scripts in which the variable `here` names a folder for what they tell.
class ScriptTest : public testing::Test
{
protected:
    ScriptTest() { ::setenv("here", m_folder.Path().c_str(), 1); }
    ~ScriptTest() override { ::unsetenv("here"); }

    std::string Told(const char* file = "told") const { return TemporaryFolder::BytesOf(m_folder / file); }

    /// What stands in a file as soon as it is a whole line.
    std::string ToldAtLast(const char* file = "told") const
    {
        std::string told;
        for (int tries = 0; !(told = Told(file)).ends_with('\n') && tries < 10000; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return told;
    }

    /// The processes whose numbers a file has in a line each.
    std::vector<pid_t> Processes(const char* file = "told") const
    {
        std::ifstream stream((m_folder / file).c_str());
        std::vector<pid_t> processes;
        for (pid_t process = 0; stream >> process;)
            processes.push_back(process);
        return processes;
    }

    static bool IsThere(pid_t process) { return ::kill(process, 0) == 0; }

    /// Whether it is gone soon, for one that nobody tells the end of.
    static bool GoesAway(pid_t process)
    {
        for (int tries = 0; IsThere(process) && tries < 10000; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return !IsThere(process);
    }

    const TemporaryFolder m_folder;
};

/// Counts how often a signal arrives in its lifetime. If a file is named, the sixth one makes it.
class CountedSignal
{
public:
    explicit CountedSignal(int number, std::string file = {}) : m_number(number), m_file(std::move(file))
    {
        s_count = 0;
        s_file = m_file.c_str();
        struct sigaction counting = {};
        counting.sa_handler = [](int)
        {
            const int earlier = errno;
            s_count = s_count + 1;
            if (s_count == 6 && *s_file != '\0')
                ::close(::open(s_file, O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
            errno = earlier;
        };
        ::sigaction(m_number, &counting, &m_earlier);
    }
    CountedSignal(const CountedSignal&) = delete;
    CountedSignal& operator=(const CountedSignal&) = delete;
    ~CountedSignal() { ::sigaction(m_number, &m_earlier, nullptr); }

    int Count() const { return s_count; }

private:
    static inline volatile sig_atomic_t s_count;
    static inline const char* s_file;

    int m_number;
    std::string m_file;
    struct sigaction m_earlier = {};
};

/// An alarm every ten milliseconds.
class FrequentAlarm : public CountedSignal
{
public:
    explicit FrequentAlarm(std::string file = {}) : CountedSignal(SIGALRM, std::move(file))
    {
        SetTimer({{0, 10000}, {0, 10000}});
    }
    FrequentAlarm(const FrequentAlarm&) = delete;
    FrequentAlarm& operator=(const FrequentAlarm&) = delete;
    ~FrequentAlarm() { SetTimer({}); }

private:
    static void SetTimer(const itimerval& time) { ::setitimer(ITIMER_REAL, &time, nullptr); }
};

}
