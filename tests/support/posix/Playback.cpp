#include "tests/support/posix/Playback.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <sys/syscall.h>

namespace support
{

namespace
{

using boost::filesystem::path;

std::string FolderOf(const std::string& name) { return path(name).parent_path().native(); }

/// Where the disk keeps a file, whatever names it has.
path PlaceOf(const TemporaryFolder& disk, std::size_t file) { return disk.Path() / std::to_string(file); }

/// The entry on the disk for a name.
path EntryOf(const TemporaryFolder& disk, std::string name)
{
    std::ranges::replace(name, '/', '_');
    return disk.Path() / name;
}

}

Playback::Playback(const std::vector<SystemCall>& calls, const std::map<std::string, std::string>& files)
    : m_files(files)
{
    struct Opened
    {
        std::string folder; ///< the name of a folder; empty for a file
        std::size_t file;
        std::size_t position;
    };
    std::map<std::uint64_t, Opened> opened;
    std::map<std::string, std::size_t> names;
    for (const auto& [name, bytes] : files)
        names.emplace(name, names.size());
    std::size_t count = names.size();
    for (const SystemCall& call : calls)
    {
        if (call.result < 0)
            continue;
        const auto found = opened.find(call.arguments[0]);
        Opened* const descriptor = found == opened.end() ? nullptr : &found->second;
        switch (call.number)
        {
        case SYS_openat:
            if ((call.arguments[2] & O_DIRECTORY) == 0 && names.emplace(call.path, count).second)
                m_taken.push_back({Step::make, count++, {}, call.path, 0, {}});
            opened[static_cast<std::uint64_t>(call.result)] =
                (call.arguments[2] & O_DIRECTORY) != 0 ? Opened{call.path, 0, 0} : Opened{{}, names[call.path], 0};
            break;
        case SYS_close:
            opened.erase(call.arguments[0]);
            break;
        case SYS_lseek:
            descriptor->position = static_cast<std::size_t>(call.result);
            break;
        case SYS_write:
            m_taken.push_back({Step::write, descriptor->file, {}, {}, descriptor->position, call.bytes});
            descriptor->position += call.bytes.size();
            break;
        case SYS_ftruncate:
            m_taken.push_back({Step::cut, descriptor->file, {}, {}, call.arguments[1], {}});
            break;
        case SYS_fsync:
            m_taken.push_back({descriptor->folder.empty() ? Step::flushFile : Step::flushFolder,
                               descriptor->file,
                               {},
                               descriptor->folder,
                               0,
                               {}});
            break;
        case SYS_link:
            names[call.otherPath] = names[call.path];
            m_taken.push_back({Step::name, names[call.path], {}, call.otherPath, 0, {}});
            break;
        case SYS_rename:
            names[call.otherPath] = names[call.path];
            m_taken.push_back({Step::rename, names[call.path], call.path, call.otherPath, 0, {}});
            names.erase(call.path);
            break;
        case SYS_unlink:
            m_taken.push_back({Step::removeName, names[call.path], {}, call.path, 0, {}});
            names.erase(call.path);
            break;
        default:
            break;
        }
    }
}

void Playback::Without(Step step)
{
    std::erase_if(m_taken, [step](const Taken& taken) { return taken.step == step; });
}

std::size_t Playback::EachState(const std::string& file,
                                const std::function<void(const std::string* bytes, bool isLast)>& look)
{
    std::size_t states = 0;
    for (std::size_t crash = 0; crash <= m_taken.size(); ++crash)
    {
        // What is on the disk for certain, and what may be there besides.
        std::vector<const Taken*> steps;
        std::vector<const Taken*> pending;
        for (std::size_t i = 0; i < crash; ++i)
        {
            const Taken& taken = m_taken[i];
            if (taken.step == Step::flushFile || taken.step == Step::flushFolder)
                continue;
            const bool isSafe = std::any_of(m_taken.begin() + static_cast<std::ptrdiff_t>(i),
                                            m_taken.begin() + static_cast<std::ptrdiff_t>(crash),
                                            [&](const Taken& later) { return IsFlushedBy(taken, later); });
            (isSafe ? steps : pending).push_back(&taken);
        }
        const std::function<void()> each = [&]
        {
            Restore(steps);
            ++states;
            const path entry = EntryOf(m_disk, file);
            const std::string bytes = TemporaryFolder::BytesOf(entry);
            look(exists(entry) ? &bytes : nullptr, crash == m_taken.size());
            for (const Taken*& next : pending)
            {
                if (next == nullptr)
                    continue;
                steps.push_back(std::exchange(next, nullptr));
                each();
                next = steps.back();
                steps.pop_back();
            }
        };
        each();
    }
    return states;
}

bool Playback::IsFlushedBy(const Taken& taken, const Taken& flush) const
{
    if (taken.step == Step::write || taken.step == Step::cut)
        return flush.step == Step::flushFile && flush.file == taken.file;
    return flush.step == Step::flushFolder && flush.newName == FolderOf(taken.newName);
}

void Playback::Restore(const std::vector<const Taken*>& steps)
{
    for (const boost::filesystem::directory_entry& each : boost::filesystem::directory_iterator(m_disk.Path()))
        remove(each.path());
    std::size_t count = 0;
    for (const auto& [name, bytes] : m_files)
    {
        const path place = PlaceOf(m_disk, count++);
        std::ofstream(place.native()) << bytes;
        create_hard_link(place, EntryOf(m_disk, name));
    }
    for (const Taken& each : m_taken)
    {
        if (each.step == Step::make)
            std::ofstream(PlaceOf(m_disk, each.file).native());
    }
    for (const Taken* const each : steps)
        Apply(*each);
}

void Playback::Apply(const Taken& taken)
{
    const path place = PlaceOf(m_disk, taken.file);
    const path entry = EntryOf(m_disk, taken.newName);
    const path earlier = EntryOf(m_disk, taken.name);
    switch (taken.step)
    {
    case Step::write:
        TemporaryFolder::WriteAt(place, taken.position, taken.bytes);
        break;
    case Step::cut:
        resize_file(place, taken.position);
        break;
    case Step::make:
    case Step::name:
    case Step::rename:
        remove(entry);
        create_hard_link(place, entry);
        if (taken.step == Step::rename && exists(earlier) && equivalent(earlier, place))
            remove(earlier);
        break;
    case Step::removeName:
        if (exists(entry) && equivalent(entry, place))
            remove(entry);
        break;
    case Step::flushFile:
    case Step::flushFolder:
        break;
    }
}

}
