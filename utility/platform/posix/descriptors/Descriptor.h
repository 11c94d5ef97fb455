#pragma once

#include <string_view>
#include <sys/types.h>
#include <utility>

namespace utility::platform::posix
{

/// A descriptor just opened, moved if it is one of the three of the standard streams. Where the host has closed these,
/// what is still written there must not go into a file of ours. -1, with the reason in errno, if it is none or cannot
/// be moved.
int AboveStandardStreams(int descriptor) noexcept;

/// Owns a descriptor, moved as above; the reason of a failure stays in errno when it is closed.
class Descriptor
{
public:
    Descriptor() : Descriptor(-1) {}
    explicit Descriptor(int number) : m_number(AboveStandardStreams(number)) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor();

    explicit operator bool() const { return m_number >= 0; }
    int Number() const { return m_number; }
    int Release() { return std::exchange(m_number, -1); }

private:
    int m_number;
};

/// Opens a file, or with O_CREAT makes it, and is not held up by a pipe that nobody writes, nor given a terminal to be
/// the process's own. Only a file that another program holds a lease on is waited for, until the other has let go. What
/// is opened does not block (O_NONBLOCK). -1, with the reason in errno, on failure.
int OpenAny(const char* path, int flags) noexcept;

/// Makes a file, to be read and written, where there is none. -1, with the reason in errno and nothing made, where
/// there is one, or a link (EEXIST), and on failure.
int MakeFile(const char* path, mode_t mode) noexcept;

/// Writes all of a text, by as many calls as it takes.
bool WriteAll(int descriptor, std::string_view text) noexcept;

}
