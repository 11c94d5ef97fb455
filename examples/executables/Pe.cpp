#include "examples/executables/Bytes.h"
#include "examples/executables/Executable.h"

#include <charconv>
#include <chrono>
#include <cstdio>

namespace executables
{

namespace
{

// Places in the file header, which begins with its signature, and in the optional header behind it.
constexpr std::uint64_t symbolsAt = 12;
constexpr std::uint64_t symbolCountAt = 16;
constexpr std::uint64_t optionalSizeAt = 20;
constexpr std::uint64_t fileHeaderSize = 24;
constexpr std::uint64_t subsystemAt = 68;

constexpr std::uint64_t magicOf32Bits = 0x10B;
constexpr std::uint64_t magicOf64Bits = 0x20B;

constexpr std::uint64_t sectionSize = 40;
constexpr std::uint64_t symbolSize = 18;
constexpr std::uint64_t importSize = 20;

constexpr DWORD isLibrary = 0x2000;

std::string TimeText(DWORD seconds)
{
    if (seconds == 0)
        return {};
    const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    char text[64];
    std::snprintf(text, sizeof(text), "%04d-%02u-%02u %02d:%02d:%02d UTC", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text;
}

std::string SubsystemText(std::uint64_t subsystem)
{
    switch (subsystem)
    {
    case 1:
        return " without a subsystem";
    case 2:
        return " with windows";
    case 3:
        return " for the console";
    case 10:
    case 11:
    case 12:
        return " for EFI";
    default:
        return "";
    }
}

class PeReader
{
public:
    PeReader(const CPEExeFile& file, Executable& executable)
        : m_file(std::string_view(static_cast<const char*>(file.GetBase()), file.GetFileSize())),
          m_header(m_file.Rest(file.GetSecondaryHeaderOffset())),
          m_optional(m_header.Rest(fileHeaderSize)),
          m_magic(m_optional.Number(0, 2)),
          m_executable(executable)
    {
        executable.kind = "portable executable" + Bits();
        if ((file.GetCharacteristics() & isLibrary) != 0)
            executable.kind += ", library";
        else
            executable.kind += ", program" + SubsystemText(IsKnown() ? m_optional.Number(subsystemAt, 2) : 0);
        executable.machine = PeMachine(file.GetMachine());
        executable.built = TimeText(file.GetTimeDateStamp());
        const std::uint64_t tableSize = file.GetNumberOfSections() * sectionSize;
        const std::uint64_t tableAt = m_header.Number(optionalSizeAt, 2);
        m_sections = m_optional.Part(tableAt, tableSize);
        if (!m_header.Has(0, fileHeaderSize) || !m_optional.Has(tableAt, tableSize))
            executable.faults.emplace_back("the file ends in its headers");
    }

    void ReadSections()
    {
        for (std::uint64_t at = 0; at < m_sections.Size(); at += sectionSize)
        {
            const Bytes section = m_sections.Part(at, sectionSize);
            m_executable.sections.push_back({NameOf(section), section.Number(8, 4)});
            if (!m_file.Has(section.Number(20, 4), section.Number(16, 4)))
                m_executable.faults.push_back("section " + m_executable.sections.back().name + " is not all there");
        }
    }

    void ReadNeeded()
    {
        const std::uint64_t directoriesAt = m_magic == magicOf64Bits ? 112 : 96;
        if (!IsKnown() || m_optional.Number(directoriesAt - 4, 4) < 2)
            return;
        const Bytes table = FromAddress(m_optional.Number(directoriesAt + 8, 4));
        for (std::uint64_t at = 0; m_executable.needed.size() < Executable::mostNeeded; at += importSize)
        {
            const std::uint64_t name = table.Part(at, importSize).Number(12, 4);
            if (name == 0)
                return;
            m_executable.needed.push_back(FromAddress(name).Text(0));
        }
    }

private:
    bool IsKnown() const { return m_magic == magicOf32Bits || m_magic == magicOf64Bits; }

    std::string Bits() const { return !IsKnown() ? "" : m_magic == magicOf64Bits ? ", 64 bits" : ", 32 bits"; }

    /// A long name is in the table of texts behind the symbols, and its place there in the section.
    std::string NameOf(const Bytes& section) const
    {
        std::string name = section.Part(0, 8).Text(0);
        std::uint64_t at = 0;
        if (!name.starts_with('/') || std::from_chars(name.data() + 1, name.data() + name.size(), at).ptr == &name[1])
            return name;
        const std::string text =
            m_file.Rest(m_header.Number(symbolsAt, 4) + m_header.Number(symbolCountAt, 4) * symbolSize).Text(at);
        return text.empty() ? name : text;
    }

    /// What stands in the file from an address in memory on, to the end of its section.
    Bytes FromAddress(std::uint64_t address) const
    {
        for (std::uint64_t at = 0; at < m_sections.Size(); at += sectionSize)
        {
            const std::uint64_t begin = m_sections.Number(at + 12, 4);
            const std::uint64_t size = m_sections.Number(at + 16, 4);
            if (address >= begin && address - begin < size)
                return m_file.Part(m_sections.Number(at + 20, 4), size).Rest(address - begin);
        }
        return Bytes();
    }

    Bytes m_file;
    Bytes m_header;
    Bytes m_optional;
    std::uint64_t m_magic;
    Bytes m_sections;
    Executable& m_executable;
};

}

Executable ExaminePe(const CPEExeFile& file)
{
    Executable executable;
    PeReader reader(file, executable);
    reader.ReadSections();
    reader.ReadNeeded();
    return executable;
}

}
