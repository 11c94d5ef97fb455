#pragma once

#include <fstream>
#include <locale>
#include <string>

namespace utility::platform::posix
{

/// A text file of the kernel, read alike whatever the host's global locale takes for a group of digits.
struct KernelFile : std::ifstream
{
    explicit KernelFile(const std::string& path)
    {
        imbue(std::locale::classic());
        open(path);
    }
};

}
