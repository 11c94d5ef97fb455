#include "examples/executables/Bytes.h"
#include "examples/executables/Executable.h"

namespace executables
{

namespace
{

constexpr std::uint64_t mostBytesOfBuildId = 64;
/// Any number of segments and sections may say that they are the whole file.
constexpr unsigned mostNotes = 1000;

enum SegmentType
{
    segmentLoaded = 1,
    segmentDynamic = 2,
    segmentInterpreter = 3,
    segmentNotes = 4,
};

enum SectionType
{
    sectionNotes = 7,
    sectionWithoutContent = 8,
};

/// The format has two widths, that of addresses and of what counts bytes, and two orders of bytes. Where a field stands
/// follows from the width.
class ElfReader
{
public:
    explicit ElfReader(std::string_view bytes)
        : m_width(Is(bytes, 4, 1) ? 4 : 8), m_file(bytes, Is(bytes, 5, 2)), m_kind(m_file.Number(16, 2))
    {
        const std::uint64_t placesAt = 24 + m_width;
        const std::uint64_t sizesAt = placesAt + 2 * m_width + 6;
        m_segments =
            Table(Word(placesAt), m_file.Number(sizesAt, 2), m_file.Number(sizesAt + 2, 2), m_width == 8 ? 56 : 32);
        const std::uint64_t sectionsAt = Word(placesAt + m_width);
        std::uint64_t sections = m_file.Number(sizesAt + 6, 2);
        std::uint64_t names = m_file.Number(sizesAt + 8, 2);
        // Where there are more than 16 bits count, the first section tells.
        const Bytes first = m_file.Part(sectionsAt, SectionSize());
        if (sections == 0 && sectionsAt != 0)
            sections = first.Number(SizeAt(), m_width);
        if (names == 0xFFFF)
            names = first.Number(8 + 4 * m_width, 4);
        m_sections = Table(sectionsAt, m_file.Number(sizesAt + 4, 2), sections, SectionSize());
        if (names < m_sections.Size() / SectionSize())
            m_names = Content(m_sections.Part(names * SectionSize(), SectionSize()));
        if (!m_file.Has(0, sizesAt + 10))
            m_executable.faults.emplace_back("the file ends in its header");
    }

    Executable Examine()
    {
        ReadSegments();
        ReadSections();
        const char* const bits = m_width == 8 ? ", 64 bits" : ", 32 bits";
        const char* const order = m_file.IsBigEndian() ? ", big-endian, " : ", little-endian, ";
        m_executable.kind = std::string("ELF") + bits + order + KindText();
        m_executable.machine = ElfMachine(m_file.Number(18, 2));
        return std::move(m_executable);
    }

private:
    static bool Is(std::string_view bytes, std::size_t at, char value)
    {
        return bytes.size() > at && bytes[at] == value;
    }

    std::uint64_t Word(std::uint64_t at) const { return m_file.Number(at, m_width); }

    // In the header of a section.
    std::uint64_t SectionSize() const { return 16 + 6 * std::uint64_t{m_width}; }
    std::uint64_t OffsetAt() const { return 8 + 2 * std::uint64_t{m_width}; }
    std::uint64_t SizeAt() const { return 8 + 3 * std::uint64_t{m_width}; }

    Bytes Content(const Bytes& section) const
    {
        return m_file.Part(section.Number(OffsetAt(), m_width), section.Number(SizeAt(), m_width));
    }

    Bytes Table(std::uint64_t at, std::uint64_t said, std::uint64_t count, std::uint64_t size)
    {
        if (count == 0)
            return Bytes();
        if (said != size || count > m_file.Size() / size || !m_file.Has(at, count * size))
        {
            m_executable.faults.emplace_back("a table of its header is not all there");
            return Bytes();
        }
        return m_file.Part(at, count * size);
    }

    template <class Use>
    void EachSegment(Use use) const
    {
        const std::uint64_t size = m_width == 8 ? 56 : 32;
        for (std::uint64_t at = 0; at < m_segments.Size(); at += size)
        {
            const Bytes segment = m_segments.Part(at, size);
            use(segment.Number(0, 4), segment.Number(2 * m_width, m_width),
                m_file.Part(segment.Number(m_width, m_width), segment.Number(4 * m_width, m_width)));
        }
    }

    void ReadSegments()
    {
        Bytes dynamic; // the last one, as others may be the whole file too
        EachSegment(
            [&](std::uint64_t type, std::uint64_t, const Bytes& content)
            {
                if (type == segmentInterpreter)
                    m_executable.interpreter = content.Text(0);
                else if (type == segmentNotes)
                    ReadNotes(content);
                else if (type == segmentDynamic)
                    dynamic = content;
            });
        ReadNeeded(dynamic);
    }

    void ReadSections()
    {
        for (std::uint64_t at = SectionSize(); at < m_sections.Size(); at += SectionSize())
        {
            const Bytes section = m_sections.Part(at, SectionSize());
            const std::uint64_t type = section.Number(4, 4);
            const std::uint64_t size = section.Number(SizeAt(), m_width);
            m_executable.sections.push_back({m_names.Text(section.Number(0, 4)), size});
            if (type != sectionWithoutContent && !m_file.Has(section.Number(OffsetAt(), m_width), size))
                m_executable.faults.push_back("section " + m_executable.sections.back().name + " is not all there");
            if (type == sectionNotes)
                ReadNotes(Content(section));
        }
    }

    void ReadNotes(const Bytes& notes)
    {
        const auto aligned = [](std::uint64_t size) { return (size + 3) / 4 * 4; };
        for (std::uint64_t at = 0; notes.Has(at, 12) && m_notes < mostNotes; ++m_notes)
        {
            const std::uint64_t nameSize = notes.Number(at, 4);
            const std::uint64_t size = notes.Number(at + 4, 4);
            const std::uint64_t contentAt = at + 12 + aligned(nameSize);
            if (notes.Number(at + 8, 4) == 3 && notes.Part(at + 12, nameSize).Text(0) == "GNU" &&
                size <= mostBytesOfBuildId)
                m_executable.buildId = HexOf(notes.Part(contentAt, size));
            at = contentAt + aligned(size);
        }
    }

    static std::string HexOf(const Bytes& bytes)
    {
        std::string text;
        for (std::uint64_t at = 0; at < bytes.Size(); ++at)
        {
            const std::uint64_t byte = bytes.Number(at, 1);
            text += "0123456789abcdef"[byte / 16];
            text += "0123456789abcdef"[byte % 16];
        }
        return text;
    }

    /// What libraries are needed is said by places in a table of texts, whose address may come behind them.
    void ReadNeeded(const Bytes& entries)
    {
        constexpr std::uint64_t end = 0;
        constexpr std::uint64_t library = 1;
        constexpr std::uint64_t texts = 5;
        constexpr std::uint64_t ownName = 14;
        constexpr std::uint64_t flags = 0x6FFFFFFB;
        constexpr std::uint64_t flagOfProgram = 0x08000000;
        std::vector<std::uint64_t> needed;
        std::uint64_t textsAt = ~std::uint64_t{0};
        for (std::uint64_t at = 0; entries.Has(at, 2 * std::uint64_t{m_width}); at += 2 * m_width)
        {
            const std::uint64_t tag = entries.Number(at, m_width);
            const std::uint64_t value = entries.Number(at + m_width, m_width);
            if (tag == end)
                break;
            if (tag == library && needed.size() < Executable::mostNeeded)
                needed.push_back(value);
            else if (tag == texts)
                textsAt = value;
            else if (tag == ownName)
                m_hasOwnName = true;
            else if (tag == flags)
                m_isProgram = (value & flagOfProgram) != 0;
        }
        const Bytes table = FromAddress(textsAt);
        for (const std::uint64_t at : needed)
            m_executable.needed.push_back(table.Text(at));
    }

    Bytes FromAddress(std::uint64_t address) const
    {
        Bytes found;
        EachSegment(
            [&](std::uint64_t type, std::uint64_t begin, const Bytes& content)
            {
                if (type == segmentLoaded && address >= begin && address - begin < content.Size())
                    found = content.Rest(address - begin);
            });
        return found;
    }

    /// Programs that are loaded anywhere, as libraries are, say so, or have an interpreter and no name of their own.
    const char* KindText() const
    {
        switch (m_kind)
        {
        case 1:
            return "object file";
        case 2:
            return "program";
        case 3:
            return m_isProgram || (!m_executable.interpreter.empty() && !m_hasOwnName) ? "program" : "library";
        case 4:
            return "core dump";
        default:
            return "of an unknown type";
        }
    }

    unsigned m_width;
    Bytes m_file;
    std::uint64_t m_kind;
    Bytes m_segments;
    Bytes m_sections;
    Bytes m_names;
    unsigned m_notes = 0;
    bool m_hasOwnName = false;
    bool m_isProgram = false;
    Executable m_executable;
};

}

bool IsElf(std::string_view bytes)
{
    return bytes.starts_with("\x7F"
                             "ELF");
}

Executable ExamineElf(std::string_view bytes) { return ElfReader(bytes).Examine(); }

}
