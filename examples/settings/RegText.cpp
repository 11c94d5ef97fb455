#include "examples/settings/RegText.h"

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <cstring>
#include <limits>

using utility::platform::formats::Utf16FromWide;
using utility::platform::formats::WideFromUtf16;

namespace regtext
{

namespace
{

constexpr std::u16string_view header = u"Windows Registry Editor Version 5.00";
constexpr std::u16string_view olderHeader = u"REGEDIT4";
constexpr std::string_view markOfUtf16 = "\xFF\xFE";
constexpr std::string_view markOfUtf8 = "\xEF\xBB\xBF";
constexpr std::u16string_view lineEnd = u"\r\n";
constexpr std::size_t longestLine = 76; // without the backslash that continues it

std::string BytesOf(std::u16string_view text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

std::u16string UnitsOf(std::string_view bytes)
{
    std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(units.data(), bytes.data(), units.size() * sizeof(char16_t));
    return units;
}

std::wstring Wide(std::u16string_view text) { return WideFromUtf16(text.data(), text.size()); }

std::size_t LineEnds(std::u16string_view text) { return static_cast<std::size_t>(std::ranges::count(text, u'\n')); }

std::u16string FromUtf8(std::string_view bytes, std::size_t firstLine)
{
    std::u16string text;
    for (const char* at = bytes.data(); at != bytes.data() + bytes.size();)
    {
        const auto code = boost::locale::utf::utf_traits<char>::decode(at, bytes.data() + bytes.size());
        if (!boost::locale::utf::is_valid_codepoint(code))
            throw Malformed(firstLine + LineEnds(text), "the text is neither UTF-8 nor marked as UTF-16");
        boost::locale::utf::utf_traits<char16_t>::encode(code, std::back_inserter(text));
    }
    return text;
}

std::u16string Decoded(std::string_view bytes)
{
    std::u16string text;
    if (bytes.starts_with(markOfUtf16))
    {
        text = UnitsOf(bytes.substr(markOfUtf16.size()));
        if (bytes.size() % sizeof(char16_t) != 0)
            throw Malformed(1 + LineEnds(text), "the file ends within a character");
    }
    else
    {
        text = FromUtf8(bytes.substr(bytes.starts_with(markOfUtf8) ? markOfUtf8.size() : 0), 1);
    }
    if (const std::size_t null = text.find(u'\0'); null != std::u16string::npos)
        throw Malformed(1 + LineEnds(std::u16string_view(text).substr(0, null)), "there is a null character");
    return text;
}

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }

bool IsText(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }

class Parser
{
public:
    explicit Parser(std::u16string_view text) : m_rest(text) {}

    std::vector<Key> Keys()
    {
        ReadHeader();
        while (!m_rest.empty())
        {
            SkipBlanks();
            if (Next() == u'[')
                m_keys.push_back(ReadKey());
            else if (Next() == u'"' || Next() == u'@')
                ReadValueOfKey();
            EndLine();
        }
        return std::move(m_keys);
    }

private:
    void ReadHeader()
    {
        std::u16string_view line = TakeLine();
        m_isOlder = line == olderHeader;
        if (!m_isOlder && line != header)
            Fail("this is no registry file: it begins with neither of the two headers");
        EndLine();
    }

    Key ReadKey()
    {
        std::u16string_view line = TakeLine();
        Key key;
        key.isDeletion = line.starts_with(u"[-");
        const std::size_t start = key.isDeletion ? 2 : 1;
        if (!line.ends_with(u']') || line.size() < start + 2)
            Fail("a key is named between [ and ]");
        key.path = Wide(line.substr(start, line.size() - start - 1));
        return key;
    }

    void ReadValueOfKey()
    {
        if (m_keys.empty())
            Fail("a value stands ahead of the first key");
        if (m_keys.back().isDeletion)
            Fail("a value stands under a key that is deleted");
        m_keys.back().values.push_back(ReadValue());
    }

    Value ReadValue()
    {
        Value value;
        if (!Take(u"@"))
            value.name = Wide(ReadQuoted());
        SkipBlanks();
        if (!Take(u"="))
            Fail("a = is missing behind the name of a value");
        SkipBlanks();
        if (Next() == u'"')
        {
            value.type = REG_SZ;
            value.data = BytesOf(ReadQuoted() + u'\0');
        }
        else if (Take(u"dword:"))
        {
            const DWORD number = ReadHexNumber(8);
            value.type = REG_DWORD;
            value.data.assign(reinterpret_cast<const char*>(&number), sizeof number);
        }
        else if (Take(u"hex:"))
        {
            value.type = REG_BINARY;
            value.data = ReadBytes();
        }
        else if (Take(u"hex("))
        {
            value.type = ReadHexNumber(8);
            if (!Take(u"):"))
                Fail("): is missing behind the type of a value");
            const std::size_t line = m_line;
            value.data = ReadBytes();
            // The older form has texts in narrow characters.
            if (m_isOlder && IsText(value.type))
                value.data = BytesOf(FromUtf8(value.data, line));
        }
        else if (Take(u"-"))
        {
            value.isDeletion = true;
        }
        else
        {
            Fail("the value is none of \"text\", dword:, hex:, hex(type): and -");
        }
        return value;
    }

    /// Line ends in it are part of the text.
    std::u16string ReadQuoted()
    {
        const std::size_t firstLine = m_line;
        std::u16string text;
        Take(u"\"");
        while (!Take(u"\""))
        {
            if (m_rest.empty())
                throw Malformed(firstLine, "a text is not closed");
            text += Take(u"\\") ? ReadEscaped() : m_rest.front();
            m_line += m_rest.front() == u'\n' ? 1 : 0;
            m_rest.remove_prefix(1);
        }
        return text;
    }

    /// What stands behind a \, which is not taken yet.
    char16_t ReadEscaped() const
    {
        constexpr std::u16string_view letters = u"\\\"nr";
        const std::size_t found = letters.find(Next());
        if (found == letters.npos)
            Fail("in a text, a \\ stands ahead of another \\, a \", an n or an r only");
        return u"\\\"\n\r"[found];
    }

    std::string ReadBytes()
    {
        std::string bytes;
        SkipBlanksAndContinuations();
        if (IsAtLineEnd() || Next() == u';')
            return bytes;
        do
        {
            SkipBlanksAndContinuations();
            bytes += static_cast<char>(ReadHexNumber(2));
            SkipBlanksAndContinuations();
        } while (Take(u","));
        return bytes;
    }

    DWORD ReadHexNumber(std::size_t mostDigits)
    {
        DWORD number = 0;
        std::size_t digits = 0;
        for (; digits < mostDigits && DigitOf(Next()) < 16; ++digits, m_rest.remove_prefix(1))
            number = number * 16 + DigitOf(Next());
        if (digits == 0)
            Fail("a hexadecimal digit is missing");
        return number;
    }

    static DWORD DigitOf(char16_t c)
    {
        constexpr std::u16string_view digits = u"0123456789abcdefABCDEF";
        const std::size_t found = c == u'\0' ? digits.npos : digits.find(c);
        return found == digits.npos ? 16 : static_cast<DWORD>(found < 16 ? found : found - 6);
    }

    void SkipBlanksAndContinuations()
    {
        SkipBlanks();
        while (Take(u"\\"))
        {
            SkipBlanks();
            if (!IsAtLineEnd() || m_rest.empty())
                Fail("in bytes, a \\ stands at the end of a line only");
            TakeLineEnd();
            SkipBlanks();
        }
    }

    void SkipBlanks() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(u" \t"), m_rest.size())); }

    /// What a line holds from here on, without the blanks at its end.
    std::u16string_view TakeLine()
    {
        std::u16string_view line = m_rest.substr(0, m_rest.find_first_of(lineEnd));
        m_rest.remove_prefix(line.size());
        while (!line.empty() && IsBlank(line.back()))
            line.remove_suffix(1);
        return line;
    }

    /// There may be a comment, and nothing else, between here and the end of the line.
    void EndLine()
    {
        SkipBlanks();
        if (Next() == u';')
            TakeLine();
        if (!IsAtLineEnd())
            Fail("this is neither a key, a value, nor a comment");
        TakeLineEnd();
    }

    bool IsAtLineEnd() const { return m_rest.empty() || lineEnd.find(Next()) != lineEnd.npos; }

    void TakeLineEnd()
    {
        Take(u"\r");
        Take(u"\n");
        ++m_line;
    }

    /// Null at the end of the file.
    char16_t Next() const { return m_rest.empty() ? u'\0' : m_rest.front(); }

    bool Take(std::u16string_view text)
    {
        const bool isThere = m_rest.starts_with(text);
        m_rest.remove_prefix(isThere ? text.size() : 0);
        return isThere;
    }

    [[noreturn]] void Fail(const char* reason) const { throw Malformed(m_line, reason); }

    std::u16string_view m_rest;
    std::size_t m_line = 1;
    bool m_isOlder = false;
    std::vector<Key> m_keys;
};

std::u16string Hex(DWORD number, std::size_t leastDigits)
{
    std::u16string digits;
    for (; number != 0 || digits.size() < leastDigits; number /= 16)
        digits.insert(digits.begin(), u"0123456789abcdef"[number % 16]);
    return digits;
}

std::u16string Quoted(std::u16string_view text)
{
    std::u16string quoted = u"\"";
    for (const char16_t c : text)
    {
        if (c == u'\\' || c == u'"' || c == u'\n' || c == u'\r')
            quoted += u'\\';
        quoted += c == u'\n' ? u'n' : c == u'\r' ? u'r' : c;
    }
    return quoted + u'"';
}

/// Whether the bytes are a text and its terminator, and no more, in one line.
bool IsPlainText(std::string_view bytes)
{
    const std::u16string units = UnitsOf(bytes);
    return bytes.size() % sizeof(char16_t) == 0 && !units.empty() &&
           units.find_first_of(std::u16string_view(u"\0\r\n", 3)) == units.size() - 1 && units.back() == u'\0';
}

/// A value as it stands in a file, in lines of this length where the form knows how to continue one.
std::u16string Written(const Value& value, std::size_t length)
{
    std::u16string text = value.name.empty() ? u"@=" : Quoted(Utf16FromWide(value.name)) + u'=';
    if (value.isDeletion)
        return text + u'-';
    if (value.type == REG_SZ && IsPlainText(value.data))
        return text + Quoted(std::u16string_view(UnitsOf(value.data)).substr(0, value.data.size() / 2 - 1));
    if (DWORD number = 0; value.type == REG_DWORD && value.data.size() == sizeof number)
    {
        std::memcpy(&number, value.data.data(), sizeof number);
        return text + u"dword:" + Hex(number, 8);
    }

    text += value.type == REG_BINARY ? u"hex:" : u"hex(" + Hex(value.type, 1) + u"):";
    std::size_t column = text.size();
    for (std::size_t i = 0; i < value.data.size(); ++i)
    {
        text += Hex(static_cast<unsigned char>(value.data[i]), 2);
        column += 3;
        if (i + 1 == value.data.size())
            break;
        text += u',';
        if (column > length)
        {
            text += u"\\\r\n  ";
            column = 2;
        }
    }
    return text;
}

}

Malformed::Malformed(std::size_t line, const std::string& reason)
    : std::runtime_error("line " + std::to_string(line) + ": " + reason)
{
}

std::vector<Key> Parse(std::string_view bytes) { return Parser(Decoded(bytes)).Keys(); }

std::string Text(const std::vector<Key>& keys)
{
    std::u16string text(header);
    text += lineEnd;
    for (const Key& key : keys)
    {
        const std::u16string path = Utf16FromWide(key.path);
        if (path.find_first_of(lineEnd) != std::u16string::npos)
            throw std::runtime_error("a registry file cannot hold a key with a line end in its name");
        text += lineEnd;
        text += (key.isDeletion ? u"[-" : u"[") + path + u']';
        text += lineEnd;
        for (const Value& value : key.values)
        {
            text += Written(value, longestLine);
            text += lineEnd;
        }
    }
    text += lineEnd;
    return std::string(markOfUtf16) + BytesOf(text);
}

std::wstring Line(const Value& value) { return Wide(Written(value, std::numeric_limits<std::size_t>::max())); }

std::string DataOfText(std::wstring_view text) { return BytesOf(Utf16FromWide(text) + u'\0'); }

}
