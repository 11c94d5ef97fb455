#pragma once

#include <cstdint>

namespace support
{

/// For its lifetime SQLite fails on this thread: at call number `at` (the first is 1) of those below it that can fail
/// in this way, or at all from there on. Below it are the system's files and its allocations. Databases that are open
/// already fail as well. SQLite waits for nobody meanwhile: it sleeps no time.
class FailingDatabase
{
public:
    enum class Failure
    {
        busy,        ///< a lock is held by another
        full,        ///< the disk
        inputOutput, ///< any call on a file
        memory,      ///< any allocation
        lostBytes    ///< those of a later page, to be read: SQLite takes that for damage
    };
    enum class Lasting
    {
        once,
        forGood
    };

    FailingDatabase(Failure failure, Lasting lasting, int at) noexcept;
    FailingDatabase(const FailingDatabase&) = delete;
    FailingDatabase& operator=(const FailingDatabase&) = delete;
    ~FailingDatabase();

    /// Whether it has come to that.
    bool HasFailed() const noexcept { return m_made >= m_at; }

    /// Whether a call that can fail in this way, and is about to be made, does.
    static bool Fails(Failure failure) noexcept;

    /// How many microseconds SQLite has slept on this thread, at all times, to wait for others.
    static std::int64_t Slept() noexcept;

private:
    Failure m_failure;
    Lasting m_lasting;
    int m_at;
    int m_made = 0;
};

}
