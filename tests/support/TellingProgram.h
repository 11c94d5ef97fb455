#pragma once

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Paths.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

namespace support
{

/// A program that tells which arguments it gets, and what it told last.
class TellingProgram
{
public:
    TellingProgram() { SetTold((m_folder / "told").string()); }
    TellingProgram(const TellingProgram&) = delete;
    TellingProgram& operator=(const TellingProgram&) = delete;
    ~TellingProgram() { SetTold(""); }

    /// A command line without arguments.
    static std::wstring Line() { return L'"' + utility::platform::WideFromPath(UTILITY_TELLING_PROGRAM) + L'"'; }

    std::string Told() const { return TemporaryFolder::BytesOf(m_folder / "told"); }

    /// Waits a while for it to tell something.
    std::string ToldAtLast() const
    {
        for (int tries = 0; Told().empty() && tries < 10000; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return Told();
    }

private:
    static void SetTold(const std::string& file)
    {
#ifdef _WIN32
        ::_putenv(("UTILITY_TOLD=" + file).c_str());
#else
        ::setenv("UTILITY_TOLD", file.c_str(), 1);
#endif
    }

    const TemporaryFolder m_folder;
};

}
