#include "utility/platform/posix/programs/RunProgram.h"

#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/error/Errno.h"

#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

std::string TextOf(const Descriptor& file)
{
    std::string text;
    char bytes[4096];
    const auto read = [&]
    {
        return Uninterrupted([&]
                             { return ::pread(file.Number(), bytes, sizeof(bytes), static_cast<off_t>(text.size())); });
    };
    for (ssize_t size = read(); size > 0; size = read())
        text.append(bytes, static_cast<std::size_t>(size));
    return text;
}

}

std::optional<ProgramRun> RunProgram(const std::vector<std::string>& arguments, const RunBy& by)
{
    const std::string program = InstalledProgram(arguments.front());
    const Descriptor output(::memfd_create("output", MFD_CLOEXEC));
    if (program.empty() || !output)
        return std::nullopt;
    // Of a program that is nobody's child only a shell in between knows the exit code: it writes it last. A program
    // that runs on shall not fill the memory with what it writes.
    std::vector<std::string> shell = {
        "sh", "-c", by.keepsOutput ? "\"$@\"; printf '\\n%d' $?" : "\"$@\" >/dev/null; printf '\\n%d' $?", "sh",
        program};
    shell.insert(shell.end(), arguments.begin() + 1, arguments.end());
    const std::vector<const char*> pointers = PointersTo(shell);
    ProgramStart start;
    start.program = "/bin/sh";
    start.arguments = pointers.data();
    start.streams = {by.input, output.Number(), ProgramStart::nowhere};
    // What asks the user goes with the host when Ctrl-C does.
    start.group = by.milliseconds == ProgramStart::forEver ? ProgramStart::theHosts : ProgramStart::ofOwnSession;
    start.hasFreshSignals = true;
    start.awaited = by.milliseconds;
    start.isKilledLate = !by.runsOn;
    const ProgramState state = StartProgram(start);
    if (state == ProgramState::running)
        return ProgramRun();
    std::string text = TextOf(output);
    const std::size_t code = text.rfind('\n');
    if (state == ProgramState::notStarted || code == std::string::npos)
        return std::nullopt;
    return ProgramRun{text.substr(0, code), std::atoi(text.c_str() + code)};
}

}
