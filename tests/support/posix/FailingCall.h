#pragma once

#include <boost/filesystem/operations.hpp>

#include <cstddef>
#include <functional>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>

namespace support
{

// Failures below the POSIX backend. The tests are linked with their own version of the system's calls (those of
// FailingCall.cpp), which fails on demand. It is there for what is linked into the test program, the library among it,
// and not within other libraries.
//
//     const FailingCall failing("fsync", EIO);
//     EXPECT_FALSE(Files().FlushToDisk(file));
//     EXPECT_TRUE(failing.HasFailed());

/// For its lifetime a call of this name on this thread fails with an errno value: the first one, or the one at a later
/// position, or with `always` every one. It is not made, except for close, which lets go of its descriptor in any case.
/// Several may be there at once.
class FailingCall
{
public:
    static constexpr int always = 0;

    FailingCall(std::string_view name, int error, int at = 1) noexcept;
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;
    ~FailingCall();

    /// Whether it has come to that.
    bool HasFailed() const noexcept { return m_hasFailed; }

    /// Whether the call that is about to be made fails; errno says why.
    static bool Fails(std::string_view name) noexcept;

private:
    std::string_view m_name;
    int m_error;
    int m_at;
    int m_made = 0;
    bool m_hasFailed = false;
    FailingCall* m_earlier;
};

/// Does something ahead of the first call of this name on this thread in its lifetime.
class AheadOfCall
{
public:
    AheadOfCall(std::string_view name, std::function<void()> work);
    AheadOfCall(const AheadOfCall&) = delete;
    AheadOfCall& operator=(const AheadOfCall&) = delete;
    ~AheadOfCall();

    /// Whether it has come to that.
    bool IsDone() const noexcept { return m_isDone; }

    /// The call is about to be made.
    static void Tell(std::string_view name);

private:
    std::string_view m_name;
    std::function<void()> m_work;
    bool m_isDone = false;
};

/// For its lifetime a call of write on this thread takes no more bytes than this.
class ShortWrites
{
public:
    explicit ShortWrites(std::size_t most) noexcept { s_most = most; }
    ShortWrites(const ShortWrites&) = delete;
    ShortWrites& operator=(const ShortWrites&) = delete;
    ~ShortWrites() { s_most = unlimited; }

    static std::size_t Most() noexcept { return s_most; }

private:
    static constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();
    static inline thread_local std::size_t s_most = unlimited;
};

/// For its lifetime every file is on a file system of this kind, as statfs tells it to this thread.
class FileSystemOfKind
{
public:
    explicit FileSystemOfKind(long kind) noexcept { s_kind = kind; }
    FileSystemOfKind(const FileSystemOfKind&) = delete;
    FileSystemOfKind& operator=(const FileSystemOfKind&) = delete;
    ~FileSystemOfKind() { s_kind.reset(); }

    static std::optional<long> Kind() noexcept { return s_kind; }

private:
    static inline thread_local std::optional<long> s_kind;
};

/// For its lifetime every descriptor is that of a serial port of this type, as ioctl tells it to this thread.
class SerialPortOfType
{
public:
    explicit SerialPortOfType(int type) noexcept { s_type = type; }
    SerialPortOfType(const SerialPortOfType&) = delete;
    SerialPortOfType& operator=(const SerialPortOfType&) = delete;
    ~SerialPortOfType() { s_type.reset(); }

    static std::optional<int> Type() noexcept { return s_type; }

private:
    static inline thread_local std::optional<int> s_type;
};

/// How many descriptors the process has open.
inline std::ptrdiff_t OpenDescriptors()
{
    return std::distance(boost::filesystem::directory_iterator("/proc/self/fd"), {});
}

}
