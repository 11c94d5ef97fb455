#include "utility/platform/Jobs.h"

#include "utility/platform/ErrorCodes.h"
#include "utility/platform/Modules.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/descriptors/Readable.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/files/WithoutSignalForSize.h"
#include "utility/platform/posix/handles/Handle.h"
#include "utility/platform/posix/jobs/ControlGroup.h"
#include "utility/platform/posix/jobs/JobMessages.h"
#include "utility/platform/posix/programs/Start.h"
#include "utility/platform/SystemService.h"

#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace utility::platform
{

namespace
{

using posix::Descriptor;

/// Two ends of a socket whose messages stay apart.
struct Ends
{
    Descriptor ours;
    Descriptor theirs;

    explicit operator bool() const { return ours && theirs; }
};

Ends MakeEnds()
{
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return {};
    Descriptor ours(ends[0]);
    return {std::move(ours), Descriptor(ends[1])};
}

/// False, with the reason in errno, if nobody is there to get it.
bool Send(int socket, const posix::JobRequest& request, const std::vector<int>& descriptors)
{
    iovec bytes = {const_cast<posix::JobRequest*>(&request), sizeof(request)};
    alignas(cmsghdr) char control[CMSG_SPACE(posix::mostDescriptors * sizeof(int))] = {};
    const std::size_t size = descriptors.size() * sizeof(int);
    msghdr message = {};
    message.msg_iov = &bytes;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = CMSG_SPACE(size);
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(size);
    std::memcpy(CMSG_DATA(header), descriptors.data(), size);
    return posix::Uninterrupted([&] { return ::sendmsg(socket, &message, MSG_NOSIGNAL); }) >= 0;
}

/// A file in memory with texts, each with the null that ends it.
Descriptor FileOf(const std::string& texts)
{
    const posix::WithoutSignalForSize scope;
    Descriptor file(::memfd_create("job", MFD_CLOEXEC));
    return file && posix::WriteAll(file.Number(), texts) ? std::move(file) : Descriptor();
}

std::string SupervisorFile()
{
    static const char here = 0;
    const boost::filesystem::path library = PathFromWide(Modules().FileName(Modules().ModuleAt(&here)));
    return (library.parent_path() / posix::supervisorProgram).native();
}

HANDLE FailWithoutHandle()
{
    posix::Fail();
    return nullptr;
}

/// The socket of a job, or of something that ends in one; -1, with the reason in errno, if the handle is none.
int SocketOf(posix::HandleKind kind, HANDLE handle)
{
    const int socket = posix::NumberOf(kind, handle);
    if (socket < 0)
        errno = EBADF;
    return socket;
}

class PosixJobs final : public JobService
{
public:
    HANDLE MakeJob() override
    {
        // By what the supervisor finds its children.
        if (::access("/proc/thread-self/children", R_OK) != 0)
            return FailWithoutHandle();
        Ends ends = MakeEnds();
        if (!ends)
            return FailWithoutHandle();
        const std::string program = SupervisorFile();
        const char* const arguments[] = {posix::supervisorProgram, nullptr};
        posix::ProgramStart start;
        start.program = program.c_str();
        start.arguments = arguments;
        start.streams = {ends.theirs.Number(), posix::ProgramStart::nowhere, posix::ProgramStart::nowhere};
        start.folder = "/";
        // What kills the owner's group shall not take along what cleans up behind it.
        start.group = posix::ProgramStart::own;
        if (posix::StartProgram(start) == posix::ProgramState::notStarted)
            return FailWithoutHandle();
        return posix::MakeHandle(posix::HandleKind::job, ends.ours.Release());
    }

    bool KillOnClose(HANDLE job) override { return SocketOf(posix::HandleKind::job, job) >= 0 || posix::Fail(); }

    HANDLE Watch(HANDLE job) override
    {
        const int socket = SocketOf(posix::HandleKind::job, job);
        Ends ends = socket >= 0 ? MakeEnds() : Ends();
        if (!ends)
            return FailWithoutHandle();
        // A supervisor that is gone takes nothing any more, and then what watches the job ends at once.
        Send(socket, posix::JobRequest(), {ends.theirs.Number()});
        return posix::MakeHandle(posix::HandleKind::ending, ends.ours.Release());
    }

    HANDLE StartIn(HANDLE job, const wchar_t* commandLine) override
    {
        const int socket = SocketOf(posix::HandleKind::job, job);
        Ends ends = socket >= 0 ? MakeEnds() : Ends();
        if (!ends || !Ask(socket, ends.theirs.Number(), commandLine != nullptr ? commandLine : L""))
            return FailWithoutHandle();
        ends.theirs = Descriptor();
        posix::JobAnswer answer;
        const ssize_t size =
            posix::Uninterrupted([&] { return ::recv(ends.ours.Number(), &answer, sizeof(answer), 0); });
        if (size == 0)
            errno = EPIPE;
        else if (size > 0 && answer.kind == posix::JobAnswer::failed)
            errno = static_cast<int>(answer.code);
        else if (size > 0)
            return posix::MakeHandle(posix::HandleKind::ending, ends.ours.Release());
        return FailWithoutHandle();
    }

    std::optional<DWORD> WaitForExitCode(HANDLE handle, DWORD milliseconds) override
    {
        const int socket = SocketOf(posix::HandleKind::ending, handle);
        std::optional<bool> isTold = socket < 0 ? std::nullopt : posix::WaitUntilReadable(socket, milliseconds);
        // It stays there for the next who asks. Without a supervisor nothing tells what became of its job.
        posix::JobAnswer answer = {posix::JobAnswer::ended, 1};
        if (isTold == true && ::recv(socket, &answer, sizeof(answer), MSG_PEEK) == 0)
            posix::ControlGroup::KillLost();
        if (answer.kind == posix::JobAnswer::neverEnds)
            isTold = posix::WaitUntilReadable(-1, milliseconds);
        if (isTold == true)
            return answer.code;
        if (isTold == false)
            SetLastError(ERROR_SUCCESS);
        else
            posix::Fail();
        return std::nullopt;
    }

private:
    static bool HasTerminal()
    {
        return static_cast<bool>(Descriptor(::open("/dev/tty", O_RDONLY | O_NOCTTY | O_CLOEXEC)));
    }

    /// Has the supervisor start a program as this process would.
    static bool Ask(int socket, int answers, std::wstring_view commandLine)
    {
        const std::vector<std::string> arguments = posix::ArgumentsOf(commandLine);
        const std::string program = posix::ProgramFile(arguments.front());
        if (program.empty())
            return false;
        posix::JobRequest request;
        request.kind = posix::JobRequest::start;
        request.arguments = static_cast<std::uint32_t>(arguments.size());
        std::string texts = program + '\0';
        for (const std::string& argument : arguments)
            texts += argument + '\0';
        for (const char* const* variable = environ; variable != nullptr && *variable != nullptr; ++variable)
        {
            texts += std::string(*variable) + '\0';
            ++request.variables;
        }
        const Descriptor file = FileOf(texts);
        const Descriptor folder(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!file || !folder)
            return false;
        // Where no shell minds the group, one of its processes that is stopped and the end of another, whose parent is
        // of another group, are for the system a reason to hang it all up.
        request.group = HasTerminal() ? ::getpgrp() : 0;
        std::vector<int> descriptors = {answers, file.Number(), folder.Number()};
        for (int stream = 0; stream <= STDERR_FILENO; ++stream)
        {
            if (::fcntl(stream, F_GETFD) < 0)
                continue;
            request.streams |= 1U << stream;
            descriptors.push_back(stream);
        }
        return Send(socket, request, descriptors);
    }
};

}

ServiceSlot<JobService>& JobsSlot() noexcept { return SystemService<JobService, PosixJobs>::Slot(); }

}
