#include "utility/platform/posix/jobs/ControlGroup.h"

#include "utility/platform/posix/error/Errno.h"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <poll.h>
#include <sstream>
#include <string_view>
#include <sys/file.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace utility::platform::posix
{

namespace
{

constexpr std::string_view ofAJob = "utility-job-";

std::string ContentOf(const char* file)
{
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A field of a list of mounts, in which blanks and some others stand as a backslash and three octal digits.
std::string Unescaped(const std::string& field)
{
    std::string text;
    for (std::size_t at = 0; at < field.size(); ++at)
    {
        if (field[at] == '\\' && at + 3 < field.size())
        {
            text += static_cast<char>((field[at + 1] - '0') * 64 + (field[at + 2] - '0') * 8 + (field[at + 3] - '0'));
            at += 3;
        }
        else
            text += field[at];
    }
    return text;
}

/// The path of the group of version 2, as the kernel names it.
std::string GroupOf(const std::string& groups)
{
    std::istringstream lines(groups);
    constexpr std::string_view start = "0::";
    for (std::string line; std::getline(lines, line);)
    {
        if (line.starts_with(start))
            return line.substr(start.size());
    }
    return {};
}

Descriptor OpenFolder(const std::string& path)
{
    return Descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/// Writes into one of the files of a group.
void Tell(const Descriptor& folder, const char* file, char what) noexcept
{
    const int opened = ::openat(folder.Number(), file, O_WRONLY | O_CLOEXEC);
    if (opened < 0)
        return;
    static_cast<void>(!::write(opened, &what, 1));
    ::close(opened);
}

void WaitUntilEmpty(const Descriptor& folder)
{
    constexpr int longEnough = 1000; // milliseconds
    const Descriptor events(::openat(folder.Number(), "cgroup.events", O_RDONLY | O_CLOEXEC));
    pollfd change = {events.Number(), POLLPRI, 0};
    do
    {
        char text[256];
        const ssize_t size = ::pread(events.Number(), text, sizeof(text), 0);
        if (size <= 0 ||
            std::string_view(text, static_cast<std::size_t>(size)).find("populated 1") == std::string::npos)
            return;
    } while (Uninterrupted([&] { return ::poll(&change, 1, longEnough); }) > 0);
}

/// With the groups in it, which jobs within the job may have left.
void RemoveFolder(const std::filesystem::path& folder)
{
    std::error_code ignored;
    for (std::filesystem::directory_iterator each(folder, ignored); each != end(each); each.increment(ignored))
    {
        if (each->is_directory(ignored))
            RemoveFolder(each->path());
    }
    ::rmdir(folder.c_str());
}

}

std::string ControlGroupFolder(const std::string& groups, const std::string& mounts)
{
    const std::string group = GroupOf(groups);
    std::istringstream lines(mounts);
    for (std::string line; !group.empty() && std::getline(lines, line);)
    {
        std::istringstream fields(line);
        std::string root;
        std::string point;
        std::string field;
        fields >> field >> field >> field >> root >> point;
        while (fields >> field && field != "-")
        {
        }
        if (!(fields >> field) || field != "cgroup2")
            continue;
        // What is mounted may be a part of the tree.
        root = Unescaped(root);
        if (root == "/")
            root.clear();
        if (group.starts_with(root) && (group.size() == root.size() || group[root.size()] == '/'))
            return Unescaped(point) + group.substr(root.size());
    }
    return {};
}

std::string ControlGroupFolder()
{
    return ControlGroupFolder(ContentOf("/proc/self/cgroup"), ContentOf("/proc/self/mountinfo"));
}

ControlGroup::ControlGroup(const std::string& folder)
{
    // Whoever looks for abandoned groups may find one that is not locked yet, and remove it.
    for (int tries = 0; tries < 10 && !folder.empty() && !m_folder; ++tries)
    {
        m_path = folder + '/' + std::string(ofAJob) + "XXXXXX";
        if (::mkdtemp(m_path.data()) == nullptr)
            return;
        m_folder = OpenFolder(m_path);
        if (m_folder && Uninterrupted([&] { return ::flock(m_folder.Number(), LOCK_EX); }) == 0 &&
            ::access((m_path + "/cgroup.procs").c_str(), W_OK) == 0)
            return;
        ::rmdir(m_path.c_str());
        m_folder = Descriptor();
    }
}

void ControlGroup::Enter() const noexcept { Tell(m_folder, "cgroup.procs", '0'); }

void ControlGroup::Kill() const noexcept { Tell(m_folder, "cgroup.kill", '1'); }

void ControlGroup::Remove() const
{
    if (!m_folder)
        return;
    WaitUntilEmpty(m_folder);
    RemoveFolder(m_path);
}

bool ControlGroup::KillAbandoned(const std::string& folder)
{
    bool isFound = false;
    std::error_code ignored;
    for (std::filesystem::directory_iterator each(folder, ignored); each != end(each); each.increment(ignored))
    {
        if (!each->path().filename().native().starts_with(ofAJob))
            continue;
        const ControlGroup group(each->path().native(), OpenFolder(each->path().native()));
        if (!group || ::flock(group.m_folder.Number(), LOCK_EX | LOCK_NB) != 0)
            continue;
        group.Kill();
        group.Remove();
        isFound = true;
    }
    return isFound;
}

void ControlGroup::KillLost() noexcept
try
{
    const std::string folder = ControlGroupFolder();
    // A process that is killed lets go of its files one after the other: of the group maybe later than of a socket.
    for (int tries = 0; tries < 25 && !folder.empty() && !KillAbandoned(folder); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
}
catch (const std::bad_alloc&)
{
    // The next job kills them.
}

}
