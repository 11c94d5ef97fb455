// Command lines of any characters, split, joined and split again; and arguments of any characters.

#include "utility/platform/formats/CommandLine.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    using namespace utility::platform::formats;
    const std::wstring line(bytes, bytes + size);
    const std::vector<std::wstring> arguments = SplitCommandLine(line);
    // A program's name never has a quote.
    if (arguments.empty() || SplitCommandLine(JoinCommandLine(arguments)) != arguments)
        std::abort();
    std::size_t length = 0;
    for (const std::wstring& argument : arguments)
        length += argument.size();
    if (length > line.size())
        std::abort();

    // The same characters as arguments, apart where a zero is.
    std::vector<std::wstring> given(2);
    given.front() = L"program";
    for (const wchar_t c : line)
    {
        if (c == L'\0')
            given.emplace_back();
        else
            given.back() += c;
    }
    if (SplitCommandLine(JoinCommandLine(given)) != given)
        std::abort();
    return 0;
}
