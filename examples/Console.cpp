#include "examples/Console.h"

#include "utility/Utility.h"

#include <cstdio>

#ifdef _WIN32
#include <io.h>
#include <shellapi.h>
#else
#include <unistd.h>
#endif

namespace console
{

#ifdef _WIN32

std::vector<boost::filesystem::path> Arguments(int, char**)
{
    ::SetConsoleOutputCP(CP_UTF8);
    int count = 0;
    wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (arguments == nullptr || count < 1)
        return {};
    std::vector<boost::filesystem::path> result(arguments + 1, arguments + count);
    ::LocalFree(arguments);
    return result;
}

std::string Utf8(const boost::filesystem::path& path) { return from_utf(path.native(), CP_UTF8); }

bool OutputIsTerminal() { return ::_isatty(::_fileno(stdout)) != 0; }

#else

std::vector<boost::filesystem::path> Arguments(int count, char** arguments)
{
    return {arguments + (count > 0 ? 1 : 0), arguments + count};
}

std::string Utf8(const boost::filesystem::path& path) { return path.native(); }

bool OutputIsTerminal() { return ::isatty(STDOUT_FILENO) != 0; }

#endif

Progress::Progress(std::uint64_t total) : m_total(OutputIsTerminal() ? total : 0) {}

Progress::~Progress()
{
    if (m_shown >= 0)
        std::fputs("\r    \r", stdout);
}

void Progress::Show(std::uint64_t done)
{
    const int percent = m_total == 0 ? -1 : static_cast<int>(100 * done / m_total);
    if (percent == m_shown)
        return;
    m_shown = percent;
    std::printf("\r%3d%%", percent);
    std::fflush(stdout);
}

}
