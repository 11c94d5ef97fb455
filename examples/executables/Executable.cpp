#include "examples/executables/Executable.h"

#include "examples/executables/Bytes.h"

#include <cstdio>

namespace executables
{

namespace
{

Executable ExamineNe(const CExeFile& file, const Bytes& bytes)
{
    constexpr std::uint64_t systemAt = 0x36;
    constexpr const char* systems[] = {"an unknown system", "OS/2", "Windows", "DOS", "Windows 386"};
    const std::uint64_t at = file.GetSecondaryHeaderOffset() + systemAt;
    const std::uint64_t system = bytes.Number(at, 1);
    Executable executable;
    executable.kind = std::string("16-bit program (NE) for ") + systems[system < std::size(systems) ? system : 0];
    executable.machine = "x86";
    if (!bytes.Has(at, 1))
        executable.faults.emplace_back("the file ends in its header");
    return executable;
}

}

std::optional<Executable> Examine(const CPEExeFile& file)
{
    const std::string_view bytes(static_cast<const char*>(file.GetBase()), file.GetFileSize());
    if (file.GetErrorType() != CExeFile::errExeFileNone)
        return IsElf(bytes) ? std::optional(ExamineElf(bytes)) : std::nullopt;
    Executable executable;
    executable.machine = "x86";
    switch (file.GetExeType())
    {
    case CExeFile::exeTypePE:
        return ExaminePe(file);
    case CExeFile::exeTypeNE:
        return ExamineNe(file, Bytes(bytes));
    case CExeFile::exeTypeLE:
        executable.kind = "program or driver with a linear header (LE)";
        break;
    case CExeFile::exeTypeXE:
        executable.kind = "program with a header of type XE";
        break;
    case CExeFile::exeTypeDos:
        executable.kind = "DOS program";
        break;
    default:
        executable.kind = "DOS program, followed by what is unknown";
        if (file.GetSecondaryHeaderOffset() > bytes.size())
            executable.faults.emplace_back("the header behind that of DOS would be outside the file");
    }
    return executable;
}

std::string Shown(const std::string& text)
{
    // The commands beyond ASCII are U+0080 to U+009F.
    const auto isBegun = [&text](std::size_t at)
    { return text[at] == '\xC2' && at + 1 < text.size() && (text[at + 1] & 0xE0) == 0x80; };
    std::string shown;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        const auto byte = static_cast<unsigned char>(text[at]);
        const bool isCommand = byte < 32 || byte == 127 || isBegun(at) || (at > 0 && isBegun(at - 1));
        shown += isCommand ? "\\x" + Hex(byte, 2).substr(2) : std::string(1, text[at]);
    }
    return shown;
}

std::string Hex(std::uint64_t number, int digits)
{
    char text[32];
    std::snprintf(text, sizeof(text), "0x%0*llX", digits, static_cast<unsigned long long>(number));
    return text;
}

}
