#include "tests/support/Crasher.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <expat.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace support
{

namespace
{

/// What a process writes into a pipe until nobody has the other end, or for far too long: then `isLate`. It gets a
/// signal, if there is one, as soon as it is ready.
std::string AllOf(int pipe, pid_t process, int signal, std::chrono::milliseconds patience, bool& isLate)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    std::string text;
    char part[4096];
    for (;;)
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd waiting{pipe, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (ready < 0 && errno == EINTR)
            continue;
        isLate = ready <= 0;
        const ssize_t count = isLate ? 0 : ::read(pipe, part, sizeof(part));
        if (count <= 0)
            return text;
        text.append(part, static_cast<std::size_t>(count));
        if (signal != 0 && text == "ready\n")
            ::kill(process, std::exchange(signal, 0));
    }
}

}

Crasher::Crasher(const char* program) : m_program(boost::filesystem::path(UTILITY_CRASHERS) / program) {}

Crasher::~Crasher() = default;

std::string Crasher::PathInReport() const { return boost::filesystem::canonical(m_program).string(); }

boost::filesystem::path Crasher::DataFolder() const { return m_folder / "data"; }

Crasher::End Crasher::Run(const std::string& cause, const std::function<void()>& inside)
{
    int output[2];
    if (::pipe2(output, O_CLOEXEC) != 0)
        return {};
    const pid_t process = ::fork();
    if (process == 0)
    {
        ::setenv("HOME", (m_folder / "home").c_str(), 1);
        ::setenv("XDG_DATA_HOME", DataFolder().c_str(), 1);
        const int null = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        ::dup2(null, STDIN_FILENO);
        ::dup2(output[1], STDOUT_FILENO);
        ::dup2(output[1], STDERR_FILENO);
        if (::chdir(m_folder.Path().c_str()) != 0)
            ::_exit(126);
        if (inside)
            inside();
        ::execl(m_program.c_str(), m_program.c_str(), cause.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(output[1]);
    End end;
    bool isLate = false;
    end.output = AllOf(output[0], process, m_signalWhenReady, m_patience, isLate);
    ::close(output[0]);
    if (isLate)
    {
        end.output += "The program did not end.\n";
        ::kill(process, SIGKILL);
    }
    int status = 0;
    ::waitpid(process, &status, 0);
    end.isCrash = WIFSIGNALED(status);
    end.outcome = static_cast<std::uint32_t>(end.isCrash ? WTERMSIG(status) : WEXITSTATUS(status));
    end.hasCore = end.isCrash && WCOREDUMP(status);
    return end;
}

std::string ComplaintAbout(const std::string& xml)
{
    const XML_Parser parser = ::XML_ParserCreate(nullptr);
    std::string complaint;
    if (::XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), 1) != XML_STATUS_OK)
    {
        complaint = ::XML_ErrorString(::XML_GetErrorCode(parser)) +
                    (" in line " + std::to_string(XML_GetCurrentLineNumber(parser)));
    }
    ::XML_ParserFree(parser);
    return complaint;
}

}
