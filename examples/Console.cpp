#include "examples/Console.h"

#include "utility/Utility.h"

#include <boost/filesystem/operations.hpp>
#include <boost/locale/encoding_utf.hpp>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <shellapi.h>
#else
#include <pwd.h>
#include <spawn.h>
#include <sys/wait.h>
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

std::wstring Wide(const boost::filesystem::path& path) { return path.native(); }

boost::filesystem::path PathOf(const std::string& text) { return boost::locale::conv::utf_to_utf<wchar_t>(text); }

void MakeOutputBinary() { ::_setmode(::_fileno(stdout), _O_BINARY); }

bool OutputIsTerminal() { return ::_isatty(::_fileno(stdout)) != 0; }

std::string RunAgain(const std::vector<std::string>& arguments)
{
    std::vector<std::wstring> texts = {L"again"};
    for (const std::string& argument : arguments)
        texts.emplace_back(argument.begin(), argument.end());
    std::vector<const wchar_t*> pointers;
    for (const std::wstring& text : texts)
        pointers.push_back(text.c_str());
    pointers.push_back(nullptr);
    wchar_t program[32768] = L"";
    ::GetModuleFileNameW(nullptr, program, 32768);
    char text[32];
    std::snprintf(text, sizeof text, "with 0x%llX",
                  static_cast<unsigned long long>(::_wspawnv(_P_WAIT, program, pointers.data())) & 0xFFFFFFFF);
    return text;
}

boost::filesystem::path LocalData()
{
    const wchar_t* const folder = ::_wgetenv(L"LOCALAPPDATA");
    return folder != nullptr ? folder : L"";
}

#else

std::vector<boost::filesystem::path> Arguments(int count, char** arguments)
{
    return {arguments + (count > 0 ? 1 : 0), arguments + count};
}

std::string Utf8(const boost::filesystem::path& path) { return path.native(); }

std::wstring Wide(const boost::filesystem::path& path)
{
    return boost::locale::conv::utf_to_utf<wchar_t>(path.native());
}

boost::filesystem::path PathOf(const std::string& text) { return text; }

void MakeOutputBinary() {}

bool OutputIsTerminal() { return ::isatty(STDOUT_FILENO) != 0; }

std::string RunAgain(const std::vector<std::string>& arguments)
{
    std::vector<std::string> texts = {"again"};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    // Who ignores the end of children is not told how it was.
    std::signal(SIGCHLD, SIG_DFL);
    pid_t process = 0;
    int status = 0;
    const int error = ::posix_spawn(&process, "/proc/self/exe", nullptr, nullptr, pointers.data(), environ);
    if (error != 0 || ::waitpid(process, &status, 0) != process)
        return std::string("before it began: ") + std::strerror(error != 0 ? error : errno);
    if (WIFSIGNALED(status))
        return "by signal " + std::to_string(WTERMSIG(status)) + " (" + ::strsignal(WTERMSIG(status)) + ')';
    return "with " + std::to_string(WEXITSTATUS(status));
}

boost::filesystem::path LocalData()
{
    if (const char* const folder = std::getenv("XDG_DATA_HOME"); folder != nullptr && *folder == '/')
        return folder;
    const char* home = std::getenv("HOME");
    if (home == nullptr || *home != '/')
    {
        const passwd* const account = ::getpwuid(::geteuid());
        home = account != nullptr ? account->pw_dir : "";
    }
    return *home == '/' ? boost::filesystem::path(home) / ".local/share" : boost::filesystem::path();
}

#endif

void Print(std::FILE* stream, const std::string& text) { std::fwrite(text.data(), 1, text.size(), stream); }

bool IsPrinted() { return std::fflush(stdout) == 0 && std::ferror(stdout) == 0; }

std::string ReasonOf(CException* failure, const boost::filesystem::path& path)
{
    wchar_t text[1024] = L"";
    failure->GetErrorMessage(text, 1024, nullptr);
    failure->Delete();
    boost::system::error_code ignored;
    return from_utf(text, CP_UTF8) + (boost::filesystem::is_directory(path, ignored) ? " It is a folder.\n" : "\n");
}

namespace
{

std::atomic<bool> isInterruptionAsked; // on Windows by another thread

void AskForInterruption(int signal)
{
    isInterruptionAsked = true;
    std::signal(signal, SIG_DFL);
}

/// One that is ignored, as that of a program in the background, stays so.
void (*Handle(int signal))(int)
{
    const auto earlier = std::signal(signal, AskForInterruption);
    if (earlier == SIG_IGN)
        std::signal(signal, SIG_IGN);
    return earlier;
}

}

Interruption::Interruption() : m_interrupt(Handle(SIGINT)), m_terminate(Handle(SIGTERM)) {}

Interruption::~Interruption()
{
    std::signal(SIGINT, m_interrupt);
    std::signal(SIGTERM, m_terminate);
}

bool Interruption::IsAsked() { return isInterruptionAsked; }

Progress::Progress(std::uint64_t total) : m_total(OutputIsTerminal() ? total : 0) {}

Progress::~Progress()
{
    if (m_shown < 0)
        return;
    std::fputs("\r    \r", stdout);
    std::fflush(stdout); // what is said next may go another way
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
