#include "utility/platform/posix/memory/MemoryFigures.h"

#include "utility/platform/posix/files/KernelFile.h"

#include <algorithm>
#include <locale>
#include <map>
#include <sstream>

namespace utility::platform::posix
{

namespace
{

/// The files in which a version of control groups keeps limits and usage.
struct GroupFiles
{
    const char* mount;
    const char* limit;
    const char* usage;
    const char* unusedFileContents; ///< in memory.stat
    const char* swapLimit;
    const char* swapUsage;
};

constexpr GroupFiles version1{"/sys/fs/cgroup/memory",
                              "/memory.limit_in_bytes",
                              "/memory.usage_in_bytes",
                              "total_inactive_file",
                              nullptr,
                              nullptr};
constexpr GroupFiles version2{"/sys/fs/cgroup", "/memory.max",      "/memory.current",
                              "inactive_file",  "/memory.swap.max", "/memory.swap.current"};

/// Reads lines of a name and a number each.
std::map<std::string, std::uint64_t> ReadTable(const std::string& path)
{
    std::map<std::string, std::uint64_t> table;
    KernelFile file(path);
    for (std::string line; std::getline(file, line);)
    {
        std::string name;
        std::uint64_t number = 0;
        std::istringstream fields(line);
        fields.imbue(std::locale::classic());
        if (fields >> name >> number)
            table[name] = number;
    }
    return table;
}

/// False if the file is not there, or holds no number, which is how "max" is read.
bool ReadNumber(const std::string& path, std::uint64_t& number) { return bool(KernelFile(path) >> number); }

void Limit(MemoryFigures& figures, const std::string& limitPath, const std::string& usagePath,
           std::uint64_t reclaimable)
{
    std::uint64_t limit = 0;
    std::uint64_t usage = 0;
    if (!ReadNumber(limitPath, limit) || !ReadNumber(usagePath, usage))
        return;
    usage -= std::min(usage, reclaimable);
    figures.total = std::min(figures.total, limit);
    figures.available = std::min(figures.available, limit - std::min(limit, usage));
}

void LimitByGroup(MachineMemory& memory, const GroupFiles& files, const std::string& folder)
{
    Limit(memory.physical, folder + files.limit, folder + files.usage,
          ReadTable(folder + "/memory.stat")[files.unusedFileContents]);
    if (files.swapLimit != nullptr)
        Limit(memory.swap, folder + files.swapLimit, folder + files.swapUsage, 0);
}

/// A group is limited by those that it is in as well. In a container the outer ones cannot be seen, and the outermost
/// folder may be the process's own group whatever its name.
void LimitByGroups(MachineMemory& memory, const GroupFiles& files, const std::string& root, std::string group)
{
    const std::string mount = root + files.mount;
    for (std::size_t slash = group.rfind('/'); slash != std::string::npos; slash = group.rfind('/'))
    {
        LimitByGroup(memory, files, mount + group);
        group.resize(slash);
    }
    LimitByGroup(memory, files, mount);
}

}

MachineMemory ReadMachineMemory(const std::string& root)
{
    constexpr std::uint64_t kibibyte = 1024;
    auto table = ReadTable(root + "/proc/meminfo");
    MachineMemory memory{{table["MemTotal:"] * kibibyte, table["MemAvailable:"] * kibibyte},
                         {table["SwapTotal:"] * kibibyte, table["SwapFree:"] * kibibyte}};
    KernelFile groups(root + "/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);)
    {
        // number:controllers:group, of which the second version has no controllers.
        std::istringstream fields(line);
        std::string number;
        std::string controllers;
        std::string group;
        std::getline(fields, number, ':');
        std::getline(fields, controllers, ':');
        std::getline(fields, group);
        if (controllers.empty())
            LimitByGroups(memory, version2, root, group);
        else if (("," + controllers + ",").find(",memory,") != std::string::npos)
            LimitByGroups(memory, version1, root, group);
    }
    return memory;
}

}
