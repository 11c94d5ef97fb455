#pragma once

#include "utility/platform/Boxes.h"

namespace utility::platform::posix
{

/// The terminal of the process.
class Terminal
{
public:
    Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal();

    /// A process in the background is stopped when it reads from its terminal, so it had better not ask there.
    bool IsOurs() const;

    /// Asks until the answer is one. Control and I is Ignore with the Control key held.
    BoxAnswer Ask(const char* title, const char* text) const;

private:
    char FirstOfLine() const;

    int m_file;
};

}
