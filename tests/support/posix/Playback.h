#pragma once

#include "tests/support/posix/TracedChild.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace support
{

/// What a disk may hold after a crash: the steps that a program took, of which some were brought to the disk by a flush
/// and any others may be there too, in any order. A name and the file that it leads to are two matters: one may be
/// there without the other's bytes. Of a write across the end of a sector the first sector may be there without the
/// rest, and the rest without it; within a sector it is there whole or not at all.
class Playback
{
public:
    /// A file's bytes are flushed with the file, names with their folder.
    enum class Step
    {
        make,
        write,
        cut,
        name, ///< one name more
        rename,
        removeName,
        flushFile,
        flushFolder,
    };

    /// Bytes by name.
    using Files = std::map<std::string, std::string>;

    /// Of the calls of a program that began with these files.
    Playback(const std::vector<SystemCall>& calls, const Files& files);

    /// Forgets the steps of a kind, as a disk that lies about them does.
    void Without(Step step);

    /// Forgets names at which nobody looks, and the files that only they lead to.
    void WithoutNames(const std::function<bool(const std::string& name)>& isOfNoMatter);

    /// Two steps that touch different bytes and different names leave the same in either order.
    enum class Orders
    {
        all,
        thatMayDiffer
    };

    /// Gives each state that a crash may leave: the files, and whether the crash came after the last step. One that is
    /// left in several ways is given once, or twice if the last step is in one of them. Gives the number of ways.
    std::size_t EachState(const std::function<void(const Files& files, bool isLast)>& look,
                          Orders orders = Orders::thatMayDiffer) const;

private:
    struct Taken
    {
        Step step;
        std::size_t file = 0;
        std::string name;    ///< the earlier one of two
        std::string newName; ///< or the folder of a flush
        std::size_t position = 0;
        std::string bytes;
    };

    /// Files by their numbers, and the names that lead to them.
    struct Disk
    {
        std::map<std::string, std::size_t> names;
        std::map<std::size_t, std::string> bytes;

        void Apply(const Taken& taken);
        Files NamedFiles() const;
    };

    void Write(std::size_t file, std::size_t position, const std::string& bytes);
    static bool IsFlushedBy(const Taken& taken, const Taken& flush);
    static bool TouchTheSame(const Taken& one, const Taken& other);

    Disk m_before;
    std::vector<Taken> m_taken;
};

}
