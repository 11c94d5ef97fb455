#pragma once

#include "tests/support/posix/TracedChild.h"
#include "tests/support/TemporaryFolder.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace support
{

/// What a disk may hold after a crash: the steps that a program took, of which some were brought to the disk by a flush
/// and any others may be there too, in any order. A name and the file that it leads to are two matters: one may be
/// there without the other's bytes.
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

    /// Of the calls of a program that began with these files, by their names.
    Playback(const std::vector<SystemCall>& calls, const std::map<std::string, std::string>& files);

    /// Forgets the steps of a kind, as a disk that lies about them does.
    void Without(Step step);

    /// Has each state that a crash may leave in a folder and looks into a file there: the bytes, nothing if it is not
    /// there, and whether the crash came after the last step. Gives the number of states.
    std::size_t EachState(const std::string& file,
                          const std::function<void(const std::string* bytes, bool isLast)>& look);

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

    bool IsFlushedBy(const Taken& taken, const Taken& flush) const;
    void Apply(const Taken& taken);
    void Restore(const std::vector<const Taken*>& steps);

    std::map<std::string, std::string> m_files;
    std::vector<Taken> m_taken;
    const TemporaryFolder m_disk;
};

}
