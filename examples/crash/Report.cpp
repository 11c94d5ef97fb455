#include "examples/crash/Report.h"

#include <boost/locale/utf.hpp>

#include <array>
#include <charconv>
#include <cstddef>
#include <functional>
#include <iterator>
#include <optional>
#include <utility>

namespace crash
{

namespace
{

using Utf8 = boost::locale::utf::utf_traits<char>;

constexpr char32_t replacement = 0xFFFD;

/// For characters that command a terminal, end a line or change the direction of text.
char32_t ShownCharacter(char32_t c)
{
    if (c < 0x20)
        return 0x2400 + c; // a picture of it
    if (c == 0x7F)
        return 0x2421;
    const bool isCommand = (c >= 0x80 && c < 0xA0) || c == 0x61C || (c >= 0x200B && c <= 0x200F) ||
                           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
    return isCommand ? replacement : c;
}

/// The six references that reports have.
std::string WithoutReferences(std::string_view text)
{
    static constexpr std::pair<std::string_view, std::string_view> references[] = {
        {"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&apos;", "'"}, {"&quot;", "\""}, {"&#176;", "\u00B0"}};
    std::string plain;
    while (!text.empty())
    {
        std::string_view read = text.substr(0, 1);
        std::string_view meant = read;
        if (text.front() == '&')
        {
            for (const auto& [reference, character] : references)
            {
                if (text.starts_with(reference))
                {
                    read = reference;
                    meant = character;
                }
            }
        }
        plain += meant;
        text.remove_prefix(read.size());
    }
    return plain;
}

enum class Content
{
    encoded,
    raw, ///< may have any characters in it, the ends of elements too
};

/// Goes through the elements of a report. Those that it does not know it goes through like text.
class Reader
{
public:
    explicit Reader(std::string_view bytes) : m_rest(bytes) {}

    /// What an element may have in it.
    struct Child
    {
        std::string_view name;
        std::function<void()> read;
    };

    /// Up to the end of this element, or of all. True if the end was there.
    bool Children(std::string_view name, const std::vector<Child>& children)
    {
        for (;;)
        {
            m_rest.remove_prefix(std::min(m_rest.find('<'), m_rest.size()));
            if (m_rest.empty())
                return false;
            if (Take("</", name))
                return true;
            bool isChild = false;
            for (const Child& child : children)
            {
                if (!Take("<", child.name))
                    continue;
                child.read();
                isChild = true;
                break;
            }
            if (!isChild)
                m_rest.remove_prefix(1);
        }
    }

    /// The text of an element.
    std::string Text(std::string_view name, Content content = Content::encoded)
    {
        const std::string end = "</" + std::string(name) + '>';
        std::size_t length = m_rest.find(end);
        // A raw text ends where a line does.
        while (content == Content::raw && length < m_rest.size() && !EndsLine(m_rest.substr(length + end.size())))
            length = m_rest.find(end, length + 1);
        std::string_view text = m_rest.substr(0, length);
        m_rest.remove_prefix(text.size() + (length < m_rest.size() ? end.size() : 0));
        if (content == Content::raw)
            return Shown(text);
        // What the system says ends in a line end, and in the zero characters of its buffer.
        while (!text.empty() && (text.back() == '\0' || text.back() == '\n' || text.back() == '\r'))
            text.remove_suffix(1);
        return Shown(WithoutReferences(text));
    }

private:
    static bool EndsLine(std::string_view text) { return text.starts_with('\n') || text.starts_with("\r\n"); }

    bool Take(std::string_view opening, std::string_view name)
    {
        const std::size_t size = opening.size() + name.size();
        if (m_rest.size() <= size || !m_rest.starts_with(opening) || m_rest[size] != '>' ||
            m_rest.substr(opening.size(), name.size()) != name)
            return false;
        m_rest.remove_prefix(size + 1);
        return true;
    }

    std::string_view m_rest;
};

/// Reads texts into their fields, and keeps the names that are written in both places once.
Reader::Child Field(Reader& reader, std::string_view name, std::string& field, Content content = Content::encoded)
{
    return {name, [&reader, name, &field, content] { field = reader.Text(name, content); }};
}

std::vector<Variable> ReadVariables(Reader& reader, std::string_view name)
{
    std::vector<Variable> variables;
    reader.Children(name, {{"Variable", [&]
                            {
                                Variable variable;
                                reader.Children("Variable", {Field(reader, "Symbol", variable.name),
                                                             Field(reader, "Flags", variable.flags),
                                                             Field(reader, "Register", variable.registerNumber),
                                                             Field(reader, "Tag", variable.tag),
                                                             Field(reader, "Type", variable.type),
                                                             Field(reader, "BaseType", variable.baseType),
                                                             Field(reader, "Value", variable.value)});
                                variables.push_back(std::move(variable));
                            }}});
    return variables;
}

std::vector<Frame> ReadStack(Reader& reader)
{
    std::vector<Frame> stack;
    const auto readFrame = [&]
    {
        Frame frame;
        reader.Children("StackEntry",
                        {Field(reader, "Address", frame.address),
                         Field(reader, "Frame", frame.frameAddress),
                         Field(reader, "Symbol", frame.function),
                         Field(reader, "Displacement", frame.displacement),
                         {"SourceLocation",
                          [&] {
                              reader.Children("SourceLocation",
                                              {Field(reader, "Path", frame.path), Field(reader, "Line", frame.line)});
                          }},
                         {"Parameters", [&] { frame.parameters = ReadVariables(reader, "Parameters"); }},
                         {"LocalVariables", [&] { frame.locals = ReadVariables(reader, "LocalVariables"); }}});
        stack.push_back(std::move(frame));
    };
    reader.Children("CallStack", {{"StackEntry", readFrame}});
    return stack;
}

Module ReadModule(Reader& reader)
{
    Module module;
    std::array<std::string, 4> numbers;
    const auto readVersion = [&]
    {
        reader.Children("FileVersion", {Field(reader, "Major", numbers[0]), Field(reader, "Minor", numbers[1]),
                                        Field(reader, "Release", numbers[2]), Field(reader, "Build", numbers[3]),
                                        Field(reader, "BuildTime", module.time)});
    };
    reader.Children("ModuleEntry", {Field(reader, "Path", module.path, Content::raw),
                                    Field(reader, "BaseAddress", module.base),
                                    Field(reader, "Size", module.size),
                                    {"FileVersion", readVersion}});
    for (const std::string& number : numbers)
    {
        if (!number.empty())
            module.version += (module.version.empty() ? "" : ".") + number;
    }
    return module;
}

std::string ReadSystem(Reader& reader)
{
    std::array<std::string, 5> numbers;
    const bool isThere = reader.Children(
        "SystemInformation",
        {Field(reader, "Major", numbers[0]), Field(reader, "Minor", numbers[1]), Field(reader, "Build", numbers[2]),
         Field(reader, "ServicePackMajor", numbers[3]), Field(reader, "ServicePackMinor", numbers[4])});
    if (!isThere || numbers[0].empty())
        return "";
    return numbers[0] + '.' + numbers[1] + '.' + numbers[2] + ", service pack " + numbers[3] + '.' + numbers[4];
}

/// By dbghelp's numbers.
enum Tag : std::uint64_t
{
    tagClass = 11,
    tagEnumeration = 12,
    tagFunction = 13,
    tagArray = 15,
    tagBase = 16,
};

std::optional<std::uint64_t> Number(std::string_view text, int base)
{
    if (base == 16 && text.starts_with("0x"))
        text.remove_prefix(2);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

}

bool IsReport(std::string_view bytes) { return bytes.starts_with("<ExceptionReport>"); }

Report Read(std::string_view bytes)
{
    Report report;
    Reader reader(bytes);
    const auto readProcess = [&]
    {
        reader.Children("ProcessInformation", {Field(reader, "Path", report.path, Content::raw),
                                               {"ModuleEntry", [&] { report.modules.push_back(ReadModule(reader)); }}});
    };
    report.isWhole =
        reader.Children("ExceptionReport", {Field(reader, "ExceptionCode", report.code),
                                            Field(reader, "ExceptionDescription", report.description),
                                            Field(reader, "FaultAddress", report.address),
                                            Field(reader, "FaultingModule", report.program),
                                            {"SystemInformation", [&] { report.system = ReadSystem(reader); }},
                                            {"ProcessInformation", readProcess},
                                            {"CallStack", [&] { report.stack = ReadStack(reader); }}});
    return report;
}

std::string Shown(std::string_view bytes)
{
    std::string shown;
    for (auto p = bytes.begin(); p != bytes.end();)
    {
        const auto start = p;
        const auto c = Utf8::decode(p, bytes.end());
        if (boost::locale::utf::is_valid_codepoint(c))
        {
            Utf8::encode(ShownCharacter(c), std::back_inserter(shown));
            continue;
        }
        // One for each byte: a decoder may have gone over more.
        p = start + 1;
        Utf8::encode(replacement, std::back_inserter(shown));
    }
    return shown;
}

std::string TypeOf(const Variable& variable)
{
    static constexpr std::pair<std::string_view, std::string_view> baseTypes[] = {
        {"1", "void"},  {"2", "char"},  {"3", "wchar_t"},        {"6", "int"},   {"7", "unsigned"}, {"8", "float"},
        {"10", "bool"}, {"13", "long"}, {"14", "unsigned long"}, {"30", "BSTR"}, {"31", "HRESULT"}};
    if (!variable.type.empty())
        return variable.type;
    for (const auto& [number, name] : baseTypes)
    {
        if (variable.baseType == number)
            return std::string(name);
    }
    switch (Number(variable.tag, 10).value_or(0))
    {
    case tagEnumeration:
        return "enumeration";
    case tagFunction:
        return "function";
    case tagArray:
        return "array";
    case tagBase:
        return variable.baseType.empty() ? "pointer" : "base type " + variable.baseType;
    default:
        return "";
    }
}

std::string ValueOf(const Variable& variable)
{
    // Sixteen digits, of which no more than the last eight are known.
    constexpr std::size_t unknown = 8;
    if (variable.value.size() == 18 && variable.value.starts_with("0x00000000"))
        return "0x…" + variable.value.substr(2 + unknown);
    return variable.value;
}

std::string RegisterOf(const Variable& variable)
{
    static constexpr const char* general[] = {"RAX", "RBX", "RCX", "RDX", "RSI", "RDI", "RBP", "RSP",
                                              "R8",  "R9",  "R10", "R11", "R12", "R13", "R14", "R15"};
    const std::optional<std::uint64_t> number = Number(variable.registerNumber, 16);
    if (!number)
        return "";
    if (*number >= 328 && *number < 328 + std::size(general))
        return general[*number - 328];
    if (*number >= 154 && *number < 162)
        return "XMM" + std::to_string(*number - 154);
    if (*number >= 252 && *number < 260)
        return "XMM" + std::to_string(*number - 252 + 8);
    return "register " + std::to_string(*number);
}

ModuleMap::ModuleMap(const Report& report)
{
    for (const Module& module : report.modules)
    {
        const std::optional<std::uint64_t> base = Number(module.base, 16);
        const std::optional<std::uint64_t> size = Number(module.size, 16);
        if (base && size)
            m_places.try_emplace(*base, Place{*size, &module});
    }
}

const Module* ModuleMap::At(const std::string& address) const
{
    const std::optional<std::uint64_t> wanted = Number(address, 16);
    const auto behind = wanted ? m_places.upper_bound(*wanted) : m_places.begin();
    if (behind == m_places.begin())
        return nullptr;
    const auto& [base, place] = *std::prev(behind);
    return *wanted - base < place.size ? place.module : nullptr;
}

std::string_view NameOf(std::string_view path) { return path.substr(path.find_last_of("/\\") + 1); }

}
