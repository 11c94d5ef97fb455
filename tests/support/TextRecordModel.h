#pragma once

#include "utility/numbers/PowersOfTen.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace support
{

/// What a format says of the characters.
struct TextFormat
{
    std::string terminators{",\n\0", 3};
    std::string exponentLetters = "DEde";
    std::string blanks = " ";

    bool Ends(char c) const { return terminators.find(c) != std::string::npos; }
    bool Exponent(char c) const { return exponentLetters.find(c) != std::string::npos; }
    bool Blank(char c) const { return blanks.find(c) != std::string::npos; }
};

/// A question that a read put to the format, and where the cursor stood then.
struct Question
{
    enum Kind : char
    {
        terminator = 'T',
        exponent = 'E',
        blanks = 'B',
    };

    Kind kind;
    char character; ///< 0 with `blanks`
    std::size_t place;

    bool operator==(const Question&) const = default;
};

/// The cursor over text, slow and obvious: step by step as the operations are defined, one character at a time, the
/// grammar nowhere but in the order of the steps. A place is a number of characters from the start, plus one a line, so
/// that the end of a line and the start of the next differ; the end of the record is `end`.
class TextRecordModel
{
public:
    static constexpr std::size_t end = SIZE_MAX;

    struct Message
    {
        int number;
        char character;
        bool operator==(const Message&) const = default;
    };

    /// No line may be empty.
    TextRecordModel(std::vector<std::string> lines, TextFormat format)
        : m_lines(std::move(lines)), m_format(std::move(format))
    {
    }

    std::size_t Place() const
    {
        if (IsEndOfRecord())
            return end;
        std::size_t place = m_column;
        for (std::size_t line = 0; line < m_line; ++line)
            place += m_lines[line].size() + 1;
        return place;
    }

    bool IsEndOfRecord() const { return m_line == m_lines.size(); }

    char Current() const { return IsEndOfRecord() ? '\0' : m_lines[m_line][m_column]; }

    void Step()
    {
        if (IsEndOfRecord())
            return;
        ++m_column;
        if (m_column < m_lines[m_line].size())
            return;
        ++m_line;
        m_column = 0;
    }

    void SkipBlanks()
    {
        questions.push_back({Question::blanks, '\0', Place()});
        while (m_format.Blank(Current()))
            Step();
    }

    bool ReadChar(char& c)
    {
        SkipBlanks();
        if (IsEndOfRecord())
            return false;
        if (IsTerminator(Current()))
            return false;
        c = Current();
        Step();
        return true;
    }

    bool ReadInt(int& value)
    {
        SkipBlanks();
        std::uint32_t number = 0;
        int sign = 0;
        bool failed = false;
        char c = Current();
        if (IsTerminator(c))
        {
            value = 0;
            return true;
        }
        while (true)
        {
            if (IsDigit(c))
            {
                number = number * 10 + static_cast<std::uint32_t>(c - '0');
            }
            else if ((c == '-' || c == '+') && number == 0 && sign == 0)
            {
                sign = c == '-' ? -1 : 1;
            }
            else if (IsEndOfRecord())
            {
                messages.push_back({8300, Current()});
                failed = true;
            }
            else
            {
                SkipBlanks();
                if (IsTerminator(Current()))
                    break;
                messages.push_back({8302, Current()});
                failed = true;
            }
            Step();
            c = Current();
            if (IsTerminator(c))
                break;
            if (failed)
                break;
        }
        if (sign == -1)
            number = 0 - number;
        value = static_cast<int>(number);
        return !failed;
    }

    bool ReadReal(double& value)
    {
        SkipBlanks();
        int sign = 0;
        double whole = 0.0;
        double fraction = 0.0;
        bool failed = false;
        char c = Current();
        if (!IsTerminator(c))
        {
            while (true)
            {
                if (IsDigit(c))
                {
                    whole = whole * 10.0 + (c - '0');
                }
                else if ((c == '-' || c == '+') && sign == 0 && whole == 0.0)
                {
                    sign = c == '-' ? -1 : 1;
                }
                else if (c == '.')
                {
                    break;
                }
                else
                {
                    if (IsExponentChar(c))
                        break;
                    if (IsEndOfRecord())
                    {
                        messages.push_back({8301, Current()});
                        failed = true;
                        break;
                    }
                    SkipBlanks();
                    if (IsTerminator(Current()))
                        break;
                    messages.push_back({8303, Current()});
                    failed = true;
                    break;
                }
                Step();
                c = Current();
                if (IsTerminator(c))
                    break;
            }
            if (sign == -1)
                whole = -whole;
            if (failed)
                return false;
        }
        value = 0.0;

        c = Current();
        if (c == '.')
        {
            int count = 0;
            Step();
            c = Current();
            if (!IsTerminator(c))
            {
                while (true)
                {
                    if (!IsDigit(c))
                    {
                        if (IsExponentChar(c))
                            break;
                        SkipBlanks();
                        if (!IsTerminator(Current()))
                        {
                            messages.push_back({8303, Current()});
                            failed = true;
                        }
                        break;
                    }
                    value = value * 10.0 + (c - '0');
                    ++count;
                    Step();
                    c = Current();
                    if (IsTerminator(c))
                        break;
                }
            }
            fraction = value / pow10(count);
        }
        if (sign == -1)
            fraction = -fraction;
        value = fraction + whole;

        if (failed)
            return false;
        if (!IsExponentChar(c))
            return true;
        Step();
        int exponent = 0;
        if (!ReadInt(exponent))
            return false;
        exponent = std::max(std::min(exponent, 308), -307);
        value = pow10(exponent) * value;
        return true;
    }

    std::vector<Question> questions;
    std::vector<Message> messages;

private:
    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

    bool IsTerminator(char c)
    {
        questions.push_back({Question::terminator, c, Place()});
        return m_format.Ends(c);
    }

    bool IsExponentChar(char c)
    {
        questions.push_back({Question::exponent, c, Place()});
        return m_format.Exponent(c);
    }

    std::vector<std::string> m_lines;
    TextFormat m_format;
    std::size_t m_line = 0;
    std::size_t m_column = 0;
};

}
