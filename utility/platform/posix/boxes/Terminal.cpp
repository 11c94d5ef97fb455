#include "utility/platform/posix/boxes/Terminal.h"

#include "utility/platform/posix/keys/ControlKey.h"

#include <cerrno>
#include <cstring>
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

Terminal::Terminal() : m_file(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {}

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
        // What was typed before the question is no answer to it.
        ::tcflush(m_file, TCIFLUSH);
        for (const char* const part :
             {"\n", title, "\n\n", text, "\n[a]bort, [R]etry, [i]gnore, Ctrl+I to ignore from now on: "})
        {
            if (::write(m_file, part, std::strlen(part)) < 0)
                return BoxAnswer::ignore;
        }
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

char Terminal::FirstOfLine() const
{
    char line[256];
    ssize_t size = 0;
    do
        size = ::read(m_file, line, sizeof(line));
    while (size < 0 && errno == EINTR);
    return size > 0 ? line[0] : endOfInput;
}

}
