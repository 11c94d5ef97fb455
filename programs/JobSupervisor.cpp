// The program that the processes of a job descend from: it starts them, adopts the orphans among them, kills them all
// when the owner of the job is gone or has closed it, and tells who watches it when none is left. Its standard input is
// the socket to the owner; requests come there (see JobMessages.h).
//
// Only its own children are ever killed one by one, each before it is collected, so no identifier can have become that
// of another process. The children of one that was killed are its own children then. Where the system lends the owner a
// control group, the processes are in one of their own as well, and are killed by that at first, all at once.
//
// It is two processes, of which one alone can be killed without harm: a guard, which only waits, and its child, the
// supervisor, whose orphans fall to the guard. Each kills the job at the end of the other. They have the same
// descriptors, so that nobody is told of an end ahead of what the guard does.

#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/jobs/ControlGroup.h"
#include "utility/platform/posix/jobs/JobMessages.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <poll.h>
#include <sched.h>
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

/// The processes that are to be killed: all whose parent is the calling process, then and later.
class Children
{
public:
    explicit operator bool() const { return static_cast<bool>(m_list); }

    /// Until none is left. Tells who was collected, and how it ended.
    template <class Tell>
    void Kill(Tell&& tell) const
    {
        int status = 0;
        pid_t process = 0;
        do
        {
            KillListed();
            process = Uninterrupted([&] { return ::waitpid(-1, &status, 0); });
            for (; process > 0; process = ::waitpid(-1, &status, WNOHANG))
                tell(process, status);
        } while (process == 0);
    }

private:
    void KillListed() const
    {
        pid_t child = 0;
        char list[4096];
        ssize_t size = 0;
        for (off_t at = 0; (size = ::pread(m_list.Number(), list, sizeof(list), at)) > 0; at += size)
        {
            for (const char* each = list; each != list + size; ++each)
            {
                const bool isDigit = *each >= '0' && *each <= '9';
                if (!isDigit && child != 0)
                    ::kill(child, SIGKILL);
                child = isDigit ? 10 * child + (*each - '0') : 0;
            }
        }
    }

    // Open from the start: there may be no descriptor for it later.
    const Descriptor m_list{::open("/proc/thread-self/children", O_RDONLY | O_CLOEXEC)};
};

/// What was so before this program made itself ready, for the programs that it starts.
struct Earlier
{
    sigset_t mask;
    rlimit files;
};

class Job
{
public:
    Job(const Earlier& earlier, const ControlGroup& group) : m_earlier(earlier), m_group(group) {}

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
    void Kill(const Children& children)
    {
        m_group.Kill();
        children.Kill([this](pid_t process, int status) { TellEnd(process, status); });
        m_group.Remove();
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
        // Should both processes of this program be killed at once, at least what it started goes with it.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        m_group.Enter();
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
        ::sigprocmask(SIG_SETMASK, &m_earlier.mask, nullptr);
        if (isReady)
            ::execve(texts[0], texts + 1, texts + 2 + request.arguments);
        error = errno;
        ::_exit(127);
    }

    const Earlier& m_earlier;
    const ControlGroup& m_group;
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

int OpenProcess(pid_t process) { return static_cast<int>(::syscall(SYS_pidfd_open, process, 0)); }

/// A descriptor that tells when the owner, whose socket this has, is gone: a copy of it by fork may still hold the
/// socket then.
int OpenOwner()
{
    ucred owner = {};
    socklen_t size = sizeof(owner);
    return ::getsockopt(STDIN_FILENO, SOL_SOCKET, SO_PEERCRED, &owner, &size) == 0 ? OpenProcess(owner.pid) : -1;
}

Earlier MakeReady()
{
    Earlier earlier = {};
    sigset_t all;
    ::sigfillset(&all);
    ::sigprocmask(SIG_SETMASK, &all, &earlier.mask);
    ::getrlimit(RLIMIT_NOFILE, &earlier.files);
    const rlimit most = {earlier.files.rlim_max, earlier.files.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &most);
    return earlier;
}

void AdoptOrphans() { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }

/// Kills what a supervisor that was killed has left.
void Guard(pid_t supervisor, const ControlGroup& group, const Children& orphans)
{
    Uninterrupted([&] { return ::waitpid(supervisor, nullptr, 0); });
    // Nobody is there to answer.
    ::shutdown(STDIN_FILENO, SHUT_RDWR);
    group.Kill();
    orphans.Kill([](pid_t, int) {});
    group.Remove();
}

void Supervise(Job& job, const Descriptor& guard)
{
    const Children children;
    sigset_t ends;
    ::sigemptyset(&ends);
    ::sigaddset(&ends, SIGCHLD);
    const Descriptor signals(::signalfd(-1, &ends, SFD_CLOEXEC | SFD_NONBLOCK));
    // Without these it would leave something behind, or keep somebody waiting.
    if (!children || !signals)
        return;
    const Descriptor owner(OpenOwner());
    enum
    {
        ofRequests,
        ofChildren,
        ofOwner,
        ofGuard
    };
    std::array<pollfd, 4> sources = {{{STDIN_FILENO, POLLIN, 0},
                                      {signals.Number(), POLLIN, 0},
                                      {owner.Number(), POLLIN, 0},
                                      {guard.Number(), POLLIN, 0}}};
    while (Uninterrupted([&] { return ::poll(sources.data(), sources.size(), -1); }) > 0)
    {
        signalfd_siginfo ignored;
        if (sources[ofChildren].revents != 0 && ::read(signals.Number(), &ignored, sizeof(ignored)) > 0)
            job.Collect();
        if (sources[ofOwner].revents != 0 || sources[ofGuard].revents != 0)
            break;
        JobRequest request;
        Descriptors descriptors;
        if (sources[ofRequests].revents == 0)
            continue;
        if (!Receive(request, descriptors))
            break;
        job.Take(request, descriptors);
    }
    job.Kill(children);
}

}

int main()
{
    const Earlier earlier = MakeReady();
    const std::string folder = ControlGroupFolder();
    const ControlGroup group(folder);
    const Descriptor guard(OpenProcess(::getpid()));
    const Children orphans;
    AdoptOrphans();
    // Without the memory for a second process the supervisor is alone.
    const long supervisor = ::syscall(SYS_clone, CLONE_FILES | SIGCHLD, nullptr, nullptr, nullptr, nullptr);
    if (supervisor > 0)
    {
        // There may be thousands of groups to look at, for which nobody has to wait.
        ControlGroup::KillAbandoned(folder);
        Guard(static_cast<pid_t>(supervisor), group, orphans);
        return 0;
    }
    AdoptOrphans();
    // What kills one of the groups spares the other.
    ::setpgid(0, 0);
    Job job(earlier, group);
    Supervise(job, guard);
}
