// Arbitrary bytes taken for an executable, of which everything is told that exe_info tells. What is told of a small
// file stays small.

#include "examples/executables/Executable.h"
#include "tests/support/FileOfBytes.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const support::FileOfBytes files({reinterpret_cast<const char*>(data), size});
    const auto executable = executables::Examine(CPEExeFile(L"any"));
    if (!executable)
        return 0;
    std::size_t told = executable->buildId.size() + executable->interpreter.size();
    for (const executables::Section& section : executable->sections)
        told += section.name.size();
    for (const std::string& name : executable->needed)
        told += name.size();
    if (executable->kind.empty() || told > 300 * (size / 4 + 1))
        std::abort();
    return 0;
}
