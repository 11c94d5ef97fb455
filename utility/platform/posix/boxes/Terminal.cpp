#include "utility/platform/posix/boxes/Terminal.h"

#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/keys/ControlKey.h"

#include <algorithm>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

constexpr char controlI = 'I' - '@';
constexpr char endOfInput = '\0';

}

Terminal::Terminal()
    : m_file(AboveStandardStreams(Uninterrupted([] { return ::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC); })))
{
}

Terminal::~Terminal()
{
    if (m_file >= 0)
        ::close(m_file);
}

bool Terminal::IsOurs() const { return m_file >= 0 && ::tcgetpgrp(m_file) == ::getpgrp(); }

BoxAnswer Terminal::Ask(const char* title, const char* text) const
{
    for (;;)
    {
        if (!Write({"\n", title, "\n\n", text, "\n[a]bort, [R]etry, [i]gnore, Ctrl+I to ignore from now on: "}))
            return BoxAnswer::ignore;
        switch (FirstOfLine())
        {
        case 'a':
        case 'A':
            return BoxAnswer::abort;
        case '\n':
        case '\r':
        case 'r':
        case 'R':
            return BoxAnswer::retry;
        case controlI:
            SetControlKeyDown(true);
            return BoxAnswer::ignore;
        case 'i':
        case 'I':
        case endOfInput:
            return BoxAnswer::ignore;
        default:
            break;
        }
    }
}

void Terminal::Show(const char* title, const char* text) const
{
    if (Write({"\n", title, "\n\n", text, "\nEnter to go on: "}))
        FirstOfLine();
}

bool Terminal::Write(std::initializer_list<const char*> parts) const
{
    ::tcflush(m_file, TCIFLUSH);
    return std::ranges::all_of(parts, [this](const char* part) { return WriteAll(m_file, part); });
}

char Terminal::FirstOfLine() const
{
    char line[256];
    const ssize_t size = Uninterrupted([&] { return ::read(m_file, line, sizeof(line)); });
    return size > 0 ? line[0] : endOfInput;
}

}
