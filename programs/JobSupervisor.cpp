// The program that the processes of a job descend from: it starts them, adopts the orphans among them, kills them all
// when the owner of the job is gone or has closed it, and tells who watches it when none is left. Its standard input is
// the socket to the owner; requests come there (see JobMessages.h).
//
// Only its own children are ever killed, each before it is collected, so no identifier can have become that of another
// process. The children of one that was killed are its own children then.

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/jobs/JobMessages.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <map>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

using namespace utility::platform::posix;

using Descriptors = std::vector<int>;

void Answer(int socket, JobAnswer::Kind kind, std::uint32_t code)
{
    const JobAnswer answer = {kind, code};
    ::send(socket, &answer, sizeof(answer), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void AnswerAtLast(int socket, JobAnswer::Kind kind, std::uint32_t code)
{
    Answer(socket, kind, code);
    ::close(socket);
}

/// What was so before this program made itself ready, for the programs that it starts.
struct Earlier
{
    sigset_t mask;
    rlimit files;
};

class Job
{
public:
    explicit Job(const Earlier& earlier) : m_earlier(earlier) {}

    void Take(const JobRequest& request, const Descriptors& descriptors)
    {
        const bool isWhole = request.kind == JobRequest::watch ? descriptors.size() == 1 : descriptors.size() >= 3;
        if (isWhole && request.kind == JobRequest::watch)
            m_watchers.push_back(descriptors[0]);
        else if (isWhole)
            Start(request, descriptors);
        else
            Close(descriptors);
    }

    /// Collects what has ended.
    void Collect()
    {
        int status = 0;
        pid_t process = 0;
        while ((process = ::waitpid(-1, &status, WNOHANG)) > 0)
            TellEnd(process, status);
        if (process < 0 && errno == ECHILD && m_isUsed)
        {
            m_isUsed = false;
            TellWatchers(JobAnswer::ended);
        }
    }

    /// Until nothing is left.
    void Kill()
    {
        int status = 0;
        pid_t process = 0;
        do
        {
            std::ifstream children("/proc/thread-self/children");
            for (pid_t child = 0; children >> child;)
                ::kill(child, SIGKILL);
            process = Uninterrupted([&] { return ::waitpid(-1, &status, 0); });
            for (; process > 0; process = ::waitpid(-1, &status, WNOHANG))
                TellEnd(process, status);
        } while (process == 0);
        Collect();
        TellWatchers(JobAnswer::neverEnds);
    }

private:
    static void Close(const Descriptors& descriptors)
    {
        for (const int each : descriptors)
            ::close(each);
    }

    void TellEnd(pid_t process, int status)
    {
        const auto found = m_started.find(process);
        if (found == m_started.end())
            return;
        constexpr int killed = 128; // as shells have it
        AnswerAtLast(found->second, JobAnswer::ended,
                     static_cast<std::uint32_t>(WIFEXITED(status) ? WEXITSTATUS(status) : killed + WTERMSIG(status)));
        m_started.erase(found);
    }

    void TellWatchers(JobAnswer::Kind kind)
    {
        for (const int each : m_watchers)
            AnswerAtLast(each, kind, 0);
        m_watchers.clear();
    }

    /// The texts of a request's file; fewer than were told if it is not whole.
    static std::vector<std::string> TextsIn(int file)
    {
        std::string bytes;
        struct stat status;
        if (::fstat(file, &status) == 0)
            bytes.resize(static_cast<std::size_t>(status.st_size));
        std::size_t done = 0;
        for (ssize_t read = 1; read > 0 && done < bytes.size();
             done += static_cast<std::size_t>(std::max<ssize_t>(read, 0)))
            read = Uninterrupted(
                [&] { return ::pread(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done)); });
        std::vector<std::string> texts;
        for (std::size_t at = 0, end = 0; (end = bytes.find('\0', at)) != std::string::npos; at = end + 1)
            texts.push_back(bytes.substr(at, end - at));
        return texts;
    }

    void Start(const JobRequest& request, const Descriptors& descriptors)
    {
        const std::vector<std::string> texts = TextsIn(descriptors[1]);
        volatile int error = EINVAL; // which the new process sets in this memory
        if (texts.size() == std::size_t{1} + request.arguments + request.variables)
        {
            std::vector<char*> pointers;
            for (const std::string& text : texts)
            {
                if (pointers.size() == std::size_t{1} + request.arguments)
                    pointers.push_back(nullptr);
                pointers.push_back(const_cast<char*>(text.c_str()));
            }
            pointers.insert(pointers.end(), 2, nullptr);
            error = 0;
            const pid_t process = ::vfork();
            if (process == 0)
                Become(request, descriptors, pointers.data(), error);
            if (process < 0)
                error = errno;
            else
                m_isUsed = true;
            if (process > 0 && error == 0)
                m_started[process] = descriptors[0];
        }
        Close({descriptors.begin() + 1, descriptors.end()});
        if (error == 0)
            Answer(descriptors[0], JobAnswer::started, 0);
        else
            AnswerAtLast(descriptors[0], JobAnswer::failed, static_cast<std::uint32_t>(error));
    }

    /// In the new process, which shares this one's memory.
    [[noreturn]] void Become(const JobRequest& request, const Descriptors& descriptors, char** texts,
                             volatile int& error) const
    {
        // Should this program be killed, at least what it started goes with it.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        // So that Ctrl-C reaches it, if the owner still has that group.
        if (request.group != 0)
            ::setpgid(0, request.group);
        bool isReady = ::fchdir(descriptors[2]) == 0;
        std::size_t next = 3;
        for (int stream = 0; stream <= STDERR_FILENO; ++stream)
        {
            if ((request.streams & 1U << stream) == 0)
                ::close(stream);
            else
                isReady = next < descriptors.size() && ::dup2(descriptors[next++], stream) == stream && isReady;
        }
        ::setrlimit(RLIMIT_NOFILE, &m_earlier.files);
        ::close_range(STDERR_FILENO + 1, ~0U, 0);
        ::sigprocmask(SIG_SETMASK, &m_earlier.mask, nullptr);
        if (isReady)
            ::execve(texts[0], texts + 1, texts + 2 + request.arguments);
        error = errno;
        ::_exit(127);
    }

    const Earlier& m_earlier;
    std::map<pid_t, int> m_started; ///< the sockets for their ends
    Descriptors m_watchers;         ///< the same for the end of them all
    bool m_isUsed = false;          ///< something was started since watchers were last told
};

/// The next request. False at the end.
bool Receive(JobRequest& request, Descriptors& descriptors)
{
    iovec bytes = {&request, sizeof(request)};
    alignas(cmsghdr) char control[CMSG_SPACE(mostDescriptors * sizeof(int))] = {};
    msghdr message = {};
    message.msg_iov = &bytes;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    const ssize_t size = Uninterrupted([&] { return ::recvmsg(STDIN_FILENO, &message, MSG_CMSG_CLOEXEC); });
    descriptors.clear();
    const cmsghdr* const header = CMSG_FIRSTHDR(&message);
    if (header != nullptr && header->cmsg_type == SCM_RIGHTS)
    {
        descriptors.resize((header->cmsg_len - CMSG_LEN(0)) / sizeof(int));
        std::memcpy(descriptors.data(), CMSG_DATA(header), descriptors.size() * sizeof(int));
    }
    return size == static_cast<ssize_t>(sizeof(request));
}

/// A descriptor that tells when the owner, whose socket this has, is gone: a copy of it by fork may still hold the
/// socket then.
int OpenOwner()
{
    ucred owner = {};
    socklen_t size = sizeof(owner);
    return ::getsockopt(STDIN_FILENO, SOL_SOCKET, SO_PEERCRED, &owner, &size) == 0
               ? static_cast<int>(::syscall(SYS_pidfd_open, owner.pid, 0))
               : -1;
}

Earlier MakeReady()
{
    Earlier earlier = {};
    sigset_t all;
    ::sigfillset(&all);
    ::sigprocmask(SIG_SETMASK, &all, &earlier.mask);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    ::getrlimit(RLIMIT_NOFILE, &earlier.files);
    const rlimit most = {earlier.files.rlim_max, earlier.files.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &most);
    return earlier;
}

}

int main()
{
    const Earlier earlier = MakeReady();
    sigset_t ends;
    ::sigemptyset(&ends);
    ::sigaddset(&ends, SIGCHLD);
    enum
    {
        requests,
        children,
        owner
    };
    std::array<pollfd, 3> sources = {{{STDIN_FILENO, POLLIN, 0},
                                      {::signalfd(-1, &ends, SFD_CLOEXEC | SFD_NONBLOCK), POLLIN, 0},
                                      {OpenOwner(), POLLIN, 0}}};
    Job job(earlier);
    while (Uninterrupted([&] { return ::poll(sources.data(), sources.size(), -1); }) > 0)
    {
        signalfd_siginfo ignored;
        if (sources[children].revents != 0 && ::read(sources[children].fd, &ignored, sizeof(ignored)) > 0)
            job.Collect();
        if (sources[owner].revents != 0)
            break;
        JobRequest request;
        Descriptors descriptors;
        if (sources[requests].revents == 0)
            continue;
        if (!Receive(request, descriptors))
            break;
        job.Take(request, descriptors);
    }
    job.Kill();
}
