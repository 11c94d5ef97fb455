#pragma once

// What a console program needs of the system, the same on both: the only file of the examples that knows which it is
// on.

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

class CException;

namespace console
{

/// The arguments without the program's name, none of them mangled by a code page. Makes a Windows console take UTF-8.
std::vector<boost::filesystem::path> Arguments(int count, char** arguments);

/// A path as UTF-8, or as wide text, for arguments that are none. What is no UTF-8 is left out of a wide text.
std::string Utf8(const boost::filesystem::path& path);
std::wstring Wide(const boost::filesystem::path& path);

/// A path that is given as UTF-8. What is none is left out on Windows.
boost::filesystem::path PathOf(const std::string& text);

/// Prints zero bytes too, which the content of a file may have anywhere.
void Print(std::FILE* stream, const std::string& text);

/// Brings to the standard output what is printed, and tells whether all has come there so far: what was refused is not
/// tried again, and a later flush knows nothing of it.
bool IsPrinted();

/// Why a file could not be opened or written, as UTF-8. Ends the failure.
std::string ReasonOf(CException* failure, const boost::filesystem::path& path);

/// Runs this program once more, with arguments that have no blanks and no quotes, and waits for it. Tells how it ended.
std::string RunAgain(const std::vector<std::string>& arguments);

/// The folder for what programs keep of one user on one machine; empty if there is none.
boost::filesystem::path LocalData();

/// What is printed from here on is left as it is, line ends too.
void MakeOutputBinary();

/// Whether what is printed is seen at once.
bool OutputIsTerminal();

/// While there is one, Ctrl-C and a plain kill do not end the program, which has to ask for them now and then. A second
/// one ends it.
class Interruption
{
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    static bool IsAsked();

private:
    using Handler = void (*)(int);
    Handler m_interrupt;
    Handler m_terminate;
};

/// One line that is rewritten, and gone at the end. Shows nothing if the output is no terminal, or with a total of 0.
class Progress
{
public:
    explicit Progress(std::uint64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void Show(std::uint64_t done);

private:
    std::uint64_t m_total;
    int m_shown = -1; // per cent
};

}
