#pragma once

// The record of a thread's locale that text/SetCLocale.h puts back.

#include <string>

namespace utility::platform
{

/// What locale the C library of a thread went by. Copies are alike.
struct RuntimeLocale
{
    std::wstring name;   ///< on Windows
    int mode = 0;        ///< on Windows, whether it was the thread's own, as the C library has it
    void* own = nullptr; ///< on Linux; it belongs to whoever made it
};

}
