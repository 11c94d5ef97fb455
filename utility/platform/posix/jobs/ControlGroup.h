#pragma once

#include "utility/platform/posix/descriptors/Descriptor.h"

#include <string>

namespace utility::platform::posix
{

/// The folder of a process's control group, of version 2, by what the system says in the process's files `cgroup` and
/// `mountinfo`. Empty if none is to be seen.
std::string ControlGroupFolder(const std::string& groups, const std::string& mounts);

/// That of this process.
std::string ControlGroupFolder();

/// A control group for the processes of a job, within the group of its owner, where the system has delegated that one:
/// what is in it can be killed at once, whatever its rights are. It is there for as long as one process has it open,
/// and abandoned then.
class ControlGroup
{
public:
    /// A new group in a folder. Where there can be none, what follows does nothing.
    explicit ControlGroup(const std::string& folder);

    explicit operator bool() const { return static_cast<bool>(m_folder); }

    /// Puts the calling process into it, if the system lets it; the copy of vfork may be that process.
    void Enter() const noexcept;

    /// Kills what is in it, also in groups within it.
    void Kill() const noexcept;

    /// Removes it as soon as nothing is in it. That may take a while behind Kill, and is not waited for without an end.
    void Remove() const;

    /// Kills what is in the abandoned groups of a folder, and removes them. Whether there was one.
    static bool KillAbandoned(const std::string& folder);

    /// The same for an owner whose supervisor has just been killed, in the folder of this process.
    static void KillLost() noexcept;

private:
    ControlGroup(std::string path, Descriptor folder) : m_path(std::move(path)), m_folder(std::move(folder)) {}

    std::string m_path;
    Descriptor m_folder;
};

}
