#include "tests/support/posix/Playback.h"

#include <boost/filesystem/path.hpp>

#include <algorithm>
#include <fcntl.h>
#include <limits>
#include <set>
#include <sys/syscall.h>
#include <utility>

namespace support
{

namespace
{

constexpr std::size_t sector = 512;

std::string FolderOf(const std::string& name) { return boost::filesystem::path(name).parent_path().native(); }

bool IsOfBytes(Playback::Step step) { return step == Playback::Step::write || step == Playback::Step::cut; }

bool IsOfNames(Playback::Step step)
{
    return !IsOfBytes(step) && step != Playback::Step::flushFile && step != Playback::Step::flushFolder;
}

}

Playback::Playback(const std::vector<SystemCall>& calls, const Files& files)
{
    struct Opened
    {
        std::string name;
        bool isFolder; ///< or the system's; it is not written
        std::size_t file;
        std::size_t position;
    };
    std::map<std::uint64_t, Opened> opened;
    for (const auto& [name, bytes] : files)
    {
        const std::size_t file = m_before.names.size();
        m_before.names.emplace(name, file);
        m_before.bytes.emplace(file, bytes);
    }
    std::map<std::string, std::size_t> names = m_before.names;
    std::size_t count = names.size();
    for (const SystemCall& call : calls)
    {
        if (call.result < 0)
            continue;
        if (const auto found = opened.find(call.arguments[0]); found != opened.end())
        {
            auto& [name, isFolder, file, position] = found->second;
            switch (call.number)
            {
            case SYS_close:
                opened.erase(found);
                break;
            case SYS_lseek:
                position = static_cast<std::size_t>(call.result);
                break;
            case SYS_write:
                Write(file, position, call.bytes);
                position += call.bytes.size();
                break;
            case SYS_pwrite64:
                Write(file, call.arguments[3], call.bytes);
                break;
            case SYS_ftruncate:
                m_taken.push_back({Step::cut, file, {}, {}, call.arguments[1], {}});
                break;
            case SYS_fsync:
            case SYS_fdatasync:
                m_taken.push_back({isFolder ? Step::flushFolder : Step::flushFile, file, {}, name, 0, {}});
                break;
            default:
                break;
            }
            continue;
        }
        switch (call.number)
        {
        case SYS_openat:
        {
            if ((call.arguments[2] & O_CREAT) != 0 && names.emplace(call.path, count).second)
                m_taken.push_back({Step::make, count++, {}, call.path, 0, {}});
            const bool isFolder = (call.arguments[2] & O_ACCMODE) == O_RDONLY && !names.contains(call.path);
            opened[static_cast<std::uint64_t>(call.result)] = {call.path, isFolder, isFolder ? 0 : names.at(call.path),
                                                               0};
            break;
        }
        case SYS_link:
            names[call.otherPath] = names.at(call.path);
            m_taken.push_back({Step::name, names.at(call.path), {}, call.otherPath, 0, {}});
            break;
        case SYS_rename:
        case SYS_renameat2: // which exchanges nothing here
            names[call.otherPath] = names.at(call.path);
            m_taken.push_back({Step::rename, names.at(call.path), call.path, call.otherPath, 0, {}});
            names.erase(call.path);
            break;
        case SYS_unlink:
            m_taken.push_back({Step::removeName, names.at(call.path), {}, call.path, 0, {}});
            names.erase(call.path);
            break;
        default:
            break;
        }
    }
}

void Playback::Write(std::size_t file, std::size_t position, const std::string& bytes)
{
    const std::size_t first = std::min(bytes.size(), sector - position % sector);
    m_taken.push_back({Step::write, file, {}, {}, position, bytes.substr(0, first)});
    if (first < bytes.size())
        m_taken.push_back({Step::write, file, {}, {}, position + first, bytes.substr(first)});
}

void Playback::Without(Step step)
{
    std::erase_if(m_taken, [step](const Taken& taken) { return taken.step == step; });
}

void Playback::WithoutNames(const std::function<bool(const std::string& name)>& isOfNoMatter)
{
    std::erase_if(m_taken,
                  [&](const Taken& taken) {
                      return IsOfNames(taken.step) && isOfNoMatter(taken.newName) &&
                             (taken.name.empty() || isOfNoMatter(taken.name));
                  });
    std::set<std::size_t> named;
    for (const auto& [name, file] : m_before.names)
        named.insert(file);
    for (const Taken& taken : m_taken)
    {
        if (IsOfNames(taken.step))
            named.insert(taken.file);
    }
    std::erase_if(m_taken, [&](const Taken& taken) { return IsOfBytes(taken.step) && !named.contains(taken.file); });
}

std::size_t Playback::EachState(const std::function<void(const Files& files, bool isLast)>& look, Orders orders) const
{
    std::set<std::pair<bool, Files>> given;
    std::size_t ways = 0;
    for (std::size_t crash = 0; crash <= m_taken.size(); ++crash)
    {
        // What is on the disk for certain, and what may be there besides.
        Disk certain = m_before;
        std::vector<const Taken*> pending;
        for (std::size_t i = 0; i < crash; ++i)
        {
            const Taken& taken = m_taken[i];
            const bool isSafe = std::any_of(m_taken.begin() + static_cast<std::ptrdiff_t>(i),
                                            m_taken.begin() + static_cast<std::ptrdiff_t>(crash),
                                            [&](const Taken& later) { return IsFlushedBy(taken, later); });
            if (isSafe)
                certain.Apply(taken);
            else if (IsOfBytes(taken.step) || IsOfNames(taken.step))
                pending.push_back(&taken);
        }
        std::vector<const Taken*> order;
        // Of the orders that leave the same the one is tried in which no step could go ahead of a later one of the
        // program without passing any that touches the same.
        const auto isTriedOtherwise = [&](const Taken& next)
        {
            for (auto before = order.rbegin(); before != order.rend() && !TouchTheSame(**before, next); ++before)
            {
                if (*before > &next)
                    return true;
            }
            return false;
        };
        const std::function<void(const Disk&)> each = [&](const Disk& disk)
        {
            ++ways;
            const bool isLast = crash == m_taken.size();
            if (const auto [state, isNew] = given.emplace(isLast, disk.NamedFiles()); isNew)
                look(state->second, isLast);
            for (const Taken*& next : pending)
            {
                if (next == nullptr || (orders == Orders::thatMayDiffer && isTriedOtherwise(*next)))
                    continue;
                Disk changed = disk;
                changed.Apply(*next);
                order.push_back(std::exchange(next, nullptr));
                each(changed);
                next = order.back();
                order.pop_back();
            }
        };
        each(certain);
    }
    return ways;
}

bool Playback::IsFlushedBy(const Taken& taken, const Taken& flush)
{
    if (IsOfBytes(taken.step))
        return flush.step == Step::flushFile && flush.file == taken.file;
    return flush.step == Step::flushFolder && flush.newName == FolderOf(taken.newName);
}

bool Playback::TouchTheSame(const Taken& one, const Taken& other)
{
    if (IsOfBytes(one.step) != IsOfBytes(other.step))
        return false;
    if (!IsOfBytes(one.step))
    {
        const auto has = [&other](const std::string& name)
        { return !name.empty() && (name == other.name || name == other.newName); };
        return has(one.name) || has(one.newName);
    }
    const auto end = [](const Taken& taken)
    { return taken.step == Step::cut ? std::numeric_limits<std::size_t>::max() : taken.position + taken.bytes.size(); };
    return one.file == other.file && one.position < end(other) && other.position < end(one);
}

void Playback::Disk::Apply(const Taken& taken)
{
    const auto removeName = [&](const std::string& name)
    {
        const auto found = names.find(name);
        if (found != names.end() && found->second == taken.file)
            names.erase(found);
    };
    std::string& file = bytes[taken.file];
    switch (taken.step)
    {
    case Step::write:
        file.resize(std::max(file.size(), taken.position + taken.bytes.size()));
        file.replace(taken.position, taken.bytes.size(), taken.bytes);
        break;
    case Step::cut:
        file.resize(taken.position);
        break;
    case Step::make:
    case Step::name:
        names[taken.newName] = taken.file;
        break;
    case Step::rename:
        removeName(taken.name);
        names[taken.newName] = taken.file;
        break;
    case Step::removeName:
        removeName(taken.newName);
        break;
    case Step::flushFile:
    case Step::flushFolder:
        break;
    }
}

Playback::Files Playback::Disk::NamedFiles() const
{
    Files files;
    for (const auto& [name, file] : names)
        files.emplace(name, bytes.contains(file) ? bytes.at(file) : std::string());
    return files;
}

}
