#pragma once

#include <cctype>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace support
{

/// What the report of a crash says, read to the letter: each deviation from its form throws, with the place.
struct CrashReport
{
    struct Variable
    {
        std::string name;
        std::uint64_t flags = 0;
        std::optional<std::uint64_t> registerNumber;
        std::uint64_t tag = 0;
        std::optional<std::string> type;
        std::optional<std::uint64_t> baseType;
        std::optional<std::string> value;
    };

    struct Frame
    {
        std::uint64_t address = 0;
        std::uint64_t frame = 0;
        std::string symbol;
        std::uint64_t displacement = 0;
        std::optional<std::string> path;
        std::uint64_t line = 0;
        bool hasVariables = false; ///< or none are known to be there
        std::vector<Variable> parameters;
        std::vector<Variable> locals;
    };

    struct Module
    {
        std::string path;
        std::uint64_t base = 0;
        std::uint64_t size = 0;
        std::optional<std::string> version; ///< with its four numbers
        std::string built;
    };

    std::uint64_t code = 0;
    std::string description;
    std::uint64_t address = 0;
    std::string faultingModule;
    bool hasSystemVersion = false;
    std::optional<std::string> path;
    std::vector<Module> modules;
    std::vector<Frame> frames;
    bool isWhole = false; ///< or it breaks off somewhere

    explicit CrashReport(std::string_view text);
};

/// The reader of a CrashReport: each operation takes what it names from the text, and throws where that is not what
/// comes next.
class CrashReportText
{
public:
    /// Thrown at the end of a text that breaks off.
    struct End
    {
    };

    explicit CrashReportText(std::string_view text) : m_text(text) {}

    void Read(CrashReport& report)
    {
        Take("<ExceptionReport>\n");
        report.code = Enclosed("<ExceptionCode>", &CrashReportText::HexPlain, "</ExceptionCode>\n");
        report.description = Enclosed("<ExceptionDescription>", &CrashReportText::Encoded, "</ExceptionDescription>\n");
        report.address = Enclosed("<FaultAddress>", &CrashReportText::Pointer, "</FaultAddress>\n");
        report.faultingModule = Enclosed("<FaultingModule>", &CrashReportText::Encoded, "</FaultingModule>\n");
        ReadSystem(report);
        ReadProcess(report);
        Take("<CallStack>\n");
        while (!Skip("</CallStack>\n"))
            ReadFrame(report.frames.emplace_back());
        Take("</ExceptionReport>\n");
        if (m_at != m_text.size())
            Fail("the end");
        report.isWhole = true;
    }

private:
    void ReadSystem(CrashReport& report)
    {
        Take("<SystemInformation>\n");
        report.hasSystemVersion = Skip("<OSVersion>\n");
        if (report.hasSystemVersion)
        {
            Enclosed("<Major>", &CrashReportText::Decimal, "</Major>\n");
            Enclosed("<Minor>", &CrashReportText::Decimal, "</Minor>\n");
            Enclosed("<Build>", &CrashReportText::Decimal, "</Build>\n");
            Enclosed("<ServicePackMajor>", &CrashReportText::Decimal, "</ServicePackMajor>\n");
            Enclosed("<ServicePackMinor>", &CrashReportText::Decimal, "</ServicePackMinor>\n");
            Enclosed("<ProductType>", &CrashReportText::Decimal, "</ProductType>\n");
            Take("</OSVersion>\n");
        }
        Take("</SystemInformation>\n");
    }

    void ReadProcess(CrashReport& report)
    {
        Take("<ProcessInformation>\n");
        if (Skip("<Path>"))
            report.path = Raw("</Path>\n");
        Take("<Modules>\n");
        while (!Skip("</Modules>\n"))
            ReadModule(report.modules.emplace_back());
        Take("</ProcessInformation>\n");
    }

    void ReadModule(CrashReport::Module& module)
    {
        Take("<ModuleEntry>\n<Path>");
        module.path = Raw("</Path>\n");
        module.base = Enclosed("<BaseAddress>", &CrashReportText::Pointer, "</BaseAddress>\n");
        module.size = Enclosed("<Size>", &CrashReportText::HexPlain, "</Size>\n");
        Take("<VersionInfo>\n<FileVersion>\n");
        if (Skip("<Major>"))
        {
            module.version = std::to_string(Decimal());
            Take("</Major>\n");
            *module.version += '.' + std::to_string(Enclosed("<Minor>", &CrashReportText::Decimal, "</Minor>\n"));
            *module.version += '.' + std::to_string(Enclosed("<Release>", &CrashReportText::Decimal, "</Release>\n"));
            *module.version += '.' + std::to_string(Enclosed("<Build>", &CrashReportText::Decimal, "</Build>\n"));
        }
        module.built = Enclosed("<BuildTime>", &CrashReportText::Time, "</BuildTime>\n");
        Take("</FileVersion>\n</VersionInfo>\n</ModuleEntry>\n");
    }

    void ReadFrame(CrashReport::Frame& frame)
    {
        Take("<StackEntry>\n");
        frame.address = Enclosed("<Address>0x", &CrashReportText::Hex16, "</Address>\n");
        frame.frame = Enclosed("<Frame>0x", &CrashReportText::Hex16, "</Frame>\n");
        frame.symbol = Enclosed("<Symbol>", &CrashReportText::Encoded, "</Symbol>\n");
        frame.displacement = Enclosed("<Displacement>0x", &CrashReportText::HexPlain, "</Displacement>\n");
        if (Skip("<SourceLocation>\n"))
        {
            frame.path = Enclosed("<Path>", &CrashReportText::Encoded, "</Path>\n");
            frame.line = Enclosed("<Line>", &CrashReportText::Decimal, "</Line>\n");
            Take("</SourceLocation>\n");
        }
        frame.hasVariables = Skip("<Parameters>\n");
        if (frame.hasVariables)
        {
            while (!Skip("</Parameters>\n"))
                ReadVariable(frame.parameters.emplace_back(), 0x40);
            Take("<LocalVariables>\n");
            while (!Skip("</LocalVariables>\n"))
                ReadVariable(frame.locals.emplace_back(), 0x180);
        }
        Take("</StackEntry>\n");
    }

    void ReadVariable(CrashReport::Variable& variable, std::uint64_t mask)
    {
        Take("<Variable>\n");
        variable.name = Enclosed("<Symbol>", &CrashReportText::Encoded, "</Symbol>\n");
        variable.flags = Enclosed("<Flags>0x", &CrashReportText::HexPlain, "</Flags>");
        if ((variable.flags & mask) == 0)
            Fail("a variable of that kind");
        const bool isInRegister = (variable.flags & 8) != 0;
        if (isInRegister)
            variable.registerNumber = Enclosed("<Register>0x", &CrashReportText::HexPlain, "</Register>");
        variable.tag = Enclosed("<Tag>", &CrashReportText::Decimal, "</Tag>");
        switch (variable.tag)
        {
        case 11:
            if (!Skip("<Type>"))
                break;
            variable.type = Encoded();
            Take("</Type>");
            if (!isInRegister)
                variable.value = EnclosedWord("</Value>");
            break;
        case 12:
            variable.value = Enclosed("<Value>", &CrashReportText::Signed, "</Value>\n");
            break;
        case 13:
            variable.value = EnclosedWord("</Value>\n");
            break;
        case 16:
            if (Skip("<BaseType>"))
                ReadBaseType(variable);
            else if (!IsNext("</Variable>\n")) // behind a pointer, or without a length
                variable.value = EnclosedWord("</Value>\n");
            break;
        default:
            break;
        }
        Take("</Variable>\n");
    }

    void ReadBaseType(CrashReport::Variable& variable)
    {
        variable.baseType = Decimal();
        Take("</BaseType>");
        switch (*variable.baseType)
        {
        case 2:
        case 3:
        case 30:
            variable.value = Enclosed("<Value>", &CrashReportText::Encoded, "</Value>\n");
            break;
        case 6:
        case 13:
        case 31:
            variable.value = Enclosed("<Value>", &CrashReportText::Signed, "</Value>\n");
            break;
        case 7:
        case 14:
            variable.value = std::to_string(Enclosed("<Value>", &CrashReportText::Decimal, "</Value>\n"));
            break;
        case 8:
            variable.value = Enclosed("<Value>", &CrashReportText::Float, "</Value>\n");
            break;
        case 10:
            Take("<Value>");
            variable.value = Skip("0") ? "0" : (Take("1"), "1");
            Take("</Value>\n");
            break;
        default:
            break;
        }
    }

    [[noreturn]] void Fail(std::string_view expected) const
    {
        throw std::runtime_error("no " + std::string(expected) + " at byte " + std::to_string(m_at) + ": " +
                                 std::string(m_text.substr(m_at, 100)));
    }

    bool IsNext(std::string_view literal) const
    {
        const std::string_view next = m_text.substr(m_at, literal.size());
        if (next.size() < literal.size() && literal.starts_with(next))
            throw End();
        return next == literal;
    }

    bool Skip(std::string_view literal)
    {
        const bool isNext = IsNext(literal);
        if (isNext)
            m_at += literal.size();
        return isNext;
    }

    void Take(std::string_view literal)
    {
        if (!Skip(literal))
            Fail(literal);
    }

    template <class Content>
    Content Enclosed(std::string_view before, Content (CrashReportText::*read)(), std::string_view behind)
    {
        Take(before);
        Content content = (this->*read)();
        Take(behind);
        return content;
    }

    /// A word of four bytes, in the field that is wide enough for eight.
    std::string EnclosedWord(std::string_view behind)
    {
        Take("<Value>0x");
        const std::size_t from = m_at;
        if (Hex16() > 0xFFFFFFFF)
            Fail("word");
        const std::string word(m_text.substr(from, 16));
        Take(behind);
        return word;
    }

    /// One and more characters of these.
    std::string_view Some(std::string_view characters)
    {
        const std::size_t end = m_text.find_first_not_of(characters, m_at);
        if (end == std::string_view::npos)
            throw End();
        if (end == m_at)
            Fail(characters);
        const std::string_view some = m_text.substr(m_at, end - m_at);
        m_at = end;
        return some;
    }

    static constexpr std::string_view decimalDigits = "0123456789";
    static constexpr std::string_view lowerDigits = "0123456789abcdef";
    static constexpr std::string_view upperDigits = "0123456789ABCDEF";

    std::uint64_t Number(std::string_view digits, int base, std::size_t width)
    {
        const std::string text(Some(digits));
        if (width != 0 ? text.size() != width : text.size() > 1 && text[0] == '0')
            Fail("number of that form");
        return std::stoull(text, nullptr, base);
    }

    std::uint64_t Decimal() { return Number(decimalDigits, 10, 0); }
    std::uint64_t HexPlain() { return Number(lowerDigits, 16, 0); }
    std::uint64_t Hex16() { return Number(lowerDigits, 16, 16); }
    std::uint64_t Pointer() { return Number(upperDigits, 16, 16); }

    std::string Signed()
    {
        const bool isNegative = Skip("-");
        return (isNegative ? "-" : "") + std::to_string(Decimal());
    }

    /// As a stream writes it that was told nothing.
    std::string Float() { return std::string(Some("0123456789.e+-naif")); }

    std::string Time()
    {
        const std::string time(Some("0123456789-"));
        if (time.size() != 15 || time.find('-') != 8 || time.rfind('-') != 8)
            Fail("time");
        return time;
    }

    /// Up to what comes next, which is taken as well.
    std::string Raw(std::string_view end)
    {
        const std::size_t at = m_text.find(end, m_at);
        if (at == std::string_view::npos)
            throw End();
        std::string text(m_text.substr(m_at, at - m_at));
        m_at = at + end.size();
        return text;
    }

    /// Up to the next element, with what is encoded decoded.
    std::string Encoded()
    {
        static constexpr struct
        {
            std::string_view reference;
            std::string_view text;
        } references[] = {{"&amp;", "&"},  {"&lt;", "<"},    {"&gt;", ">"},
                          {"&apos;", "'"}, {"&quot;", "\""}, {"&#176;", "\u00B0"}};
        std::string decoded;
        for (;;)
        {
            if (m_at == m_text.size())
                throw End();
            const char next = m_text[m_at];
            if (next == '<')
                return decoded;
            if (next == '>' || next == '\'' || next == '"')
                Fail("encoded text");
            if (next != '&')
            {
                decoded += next;
                ++m_at;
                continue;
            }
            bool isKnown = false;
            for (const auto& each : references)
            {
                if (!isKnown && Skip(each.reference))
                {
                    decoded += each.text;
                    isKnown = true;
                }
            }
            if (!isKnown)
                Fail("reference");
        }
    }

    std::string_view m_text;
    std::size_t m_at = 0;
};

inline CrashReport::CrashReport(std::string_view text)
{
    try
    {
        CrashReportText(text).Read(*this);
    }
    catch (const CrashReportText::End&)
    {
    }
}

}
