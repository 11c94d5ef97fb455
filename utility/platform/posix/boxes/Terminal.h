#pragma once

#include "utility/platform/Boxes.h"

#include <initializer_list>

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

    /// Shows a text until Enter.
    void Show(const char* title, const char* text) const;

private:
    /// What was typed before is no answer. False where nothing can be written.
    bool Write(std::initializer_list<const char*> parts) const;
    char FirstOfLine() const;

    int m_file;
};

}
