#pragma once

// Both uses of the number reader, by virtual calls and inlined, and their comparison with the model of the cursor.

#include "tests/support/TextRecordModel.h"
#include "tests/support/ThreadLog.h"
#include "utility/files/TextInputOutputFile.h"
#include "utility/records/InlineTextRecordPtr.h"

#include <bit>
#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace support
{

/// A text cursor that answers for a TextFormat and notes what it was asked.
template <class Base>
class AskedCursor : public Base
{
public:
    AskedCursor(CTextInputOutputFile* file, const std::vector<std::string>& lines, TextFormat format)
        : Base(file), m_format(std::move(format))
    {
        std::vector<std::size_t> starts;
        for (const std::string& line : lines)
        {
            starts.push_back(m_text.size());
            m_text += line + between;
        }
        for (std::size_t i = 0; i < lines.size(); ++i)
            this->Add(m_text.data() + starts[i], m_text.data() + starts[i] + lines[i].size() - 1);
        if (lines.empty())
            this->Reset();
    }

    void SkipBlanks() override
    {
        questions.push_back({Question::blanks, '\0', Place()});
        while (m_format.Blank(this->GetCurrentChar()))
            this->AdvancePtr();
    }

    bool IsTerminator(char c) override
    {
        questions.push_back({Question::terminator, c, Place()});
        return m_format.Ends(c);
    }

    bool IsExponentChar(char c) const override
    {
        questions.push_back({Question::exponent, c, Place()});
        return m_format.Exponent(c);
    }

    /// As the model counts it.
    std::size_t Place() const
    {
        const char* const place = *this;
        return place == &this->m_cNULL ? TextRecordModel::end : static_cast<std::size_t>(place - m_text.data());
    }

    mutable std::vector<Question> questions;

private:
    static constexpr char between = '7'; // would do harm if it were read

    TextFormat m_format;
    std::string m_text;
};

class VirtualCursor final : public AskedCursor<CTextRecordPtr>
{
public:
    using AskedCursor::AskedCursor;
};

class InlineCursor final : public AskedCursor<CInlineTextRecordPtr<InlineCursor>>
{
public:
    using AskedCursor::AskedCursor;
};

/// What the log holds of a message. A 0 ends the text; other characters come from a signed char, in 16 bits.
inline std::wstring TextOf(const TextRecordModel::Message& message)
{
    if (message.number == 8300)
        return L"End of file found whilst trying to read an integer number.\n";
    if (message.number == 8301)
        return L"End of file found whilst trying to read a real number.\n";
    if (message.character == '\0')
        return L"Invalid character (\n";
    const int widened = static_cast<signed char>(message.character);
    return L"Invalid character (" + std::wstring(1, static_cast<wchar_t>(static_cast<char16_t>(widened))) +
           (message.number == 8302 ? L") found whilst reading an integer number.\n"
                                   : L") found whilst reading a real number.\n");
}

enum class Reading
{
    character,
    integer,
    real,
    step,
};

/// Performs the same readings with a cursor and with the model. Debug messages must be on.
class TextRecordTrial
{
public:
    /// Compares after each reading result, bits of the value, place, and every question put to the format; at last the
    /// messages. Gives what differs, so nothing as a rule.
    template <class Cursor>
    std::string Difference(const std::vector<std::string>& lines, const TextFormat& format,
                           const std::vector<Reading>& readings)
    {
        Cursor cursor(&m_file, lines, format);
        TextRecordModel model(lines, format);
        std::ostringstream difference;
        for (const Reading reading : readings)
        {
            Perform(reading, cursor, model, difference);
            Compare(difference, "place", cursor.Place(), model.Place());
            Compare(difference, "end of record", cursor.IsEndOfRecord(), model.IsEndOfRecord());
            Compare(difference, "current character", int{cursor.GetCurrentChar()}, int{model.Current()});
            if (cursor.questions != model.questions)
                difference << "what was asked differs; ";
            if (difference.tellp() != 0)
                break;
        }
        const std::vector<Logged> logged = m_log.Take();
        Compare(difference, "number of messages", logged.size(), model.messages.size());
        for (std::size_t i = 0; i < logged.size() && i < model.messages.size(); ++i)
        {
            if (!(logged[i] == Logged{LogSeverityError, TextOf(model.messages[i])}))
                difference << "message " << i << " differs; ";
        }
        return difference.str();
    }

private:
    template <class Value>
    static void Compare(std::ostream& difference, const char* what, const Value& found, const Value& expected)
    {
        if (!(found == expected))
            difference << what << " is " << found << " instead of " << expected << "; ";
    }

    template <class Cursor>
    static void Perform(Reading reading, Cursor& cursor, TextRecordModel& model, std::ostream& difference)
    {
        // Values that no reading gives show what is left as it was.
        if (reading == Reading::character)
        {
            char found = '\x7F';
            char expected = '\x7F';
            Compare(difference, "result of ReadChar", cursor.ReadChar(found), model.ReadChar(expected));
            Compare(difference, "character", int{found}, int{expected});
        }
        else if (reading == Reading::integer)
        {
            int found = 4711;
            int expected = 4711;
            Compare(difference, "result of ReadInt", cursor.ReadInt(found), model.ReadInt(expected));
            Compare(difference, "integer", found, expected);
        }
        else if (reading == Reading::real)
        {
            double found = 4711e100;
            double expected = 4711e100;
            Compare(difference, "result of ReadReal", cursor.ReadReal(found), model.ReadReal(expected));
            difference << std::hex;
            Compare(difference, "bits of the real", std::bit_cast<std::uint64_t>(found),
                    std::bit_cast<std::uint64_t>(expected));
            difference << std::dec;
        }
        else
        {
            cursor.AdvancePtr();
            model.Step();
        }
    }

    ThreadLog m_log;
    CTextInputOutputFile m_file;
};

}
