#pragma once

// Runs of numbers against single reads.

#include "tests/support/ThreadLog.h"
#include "utility/files/TextInputOutputFile.h"
#include "utility/records/DelimitedTextRecordPtr.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace support
{

/// What a CDelimitedTextRecordPtr is, by virtual calls.
class SlowDelimitedCursor final : public CTextRecordPtr
{
public:
    SlowDelimitedCursor(CTextInputOutputFile* file, std::string_view ends) : CTextRecordPtr(file), m_ends(ends) {}
    bool IsTerminator(char c) override { return m_ends.find(c) != std::string::npos || (c == '\0' && IsEndOfRecord()); }

private:
    std::string m_ends;
};

/// A record, and how it is read to its end: so many values at a time.
struct RunCase
{
    std::vector<std::string_view> lines;
    std::string ends = ",;";
    char separator = ',';
    std::size_t together = 100;
};

/// Debug messages must be on.
class RunTrial
{
public:
    /// Reads the record by runs and one by one, and compares after each run: result, count, bits of all values, forms,
    /// place, and the messages. Gives what differs, so nothing as a rule.
    template <class Value, class Cursor = CDelimitedTextRecordPtr>
    std::string Difference(const RunCase& each)
    {
        m_places.clear();
        for (const std::string_view line : each.lines)
        {
            for (const char& c : line)
                m_places.push_back(&c);
        }
        m_place = 0;
        Cursor runs(&m_file, each.ends);
        SlowDelimitedCursor single(&m_file, each.ends);
        for (CTextRecordPtr* const cursor :
             {static_cast<CTextRecordPtr*>(&runs), static_cast<CTextRecordPtr*>(&single)})
        {
            cursor->Reset();
            for (const std::string_view line : each.lines)
                cursor->Add(line.data(), line.data() + line.size() - 1);
        }
        std::ostringstream difference;
        for (std::size_t run = 0; difference.tellp() == 0; ++run)
        {
            const Read<Value> found = ReadRun<Value>(runs, each);
            const std::vector<Logged> messages = m_log.Take();
            const Read<Value> expected = ReadOneByOne<Value>(single, each);
            if (found.isGood != expected.isGood)
                difference << "result is " << found.isGood << "; ";
            if (found.count != expected.count)
                difference << "count is " << found.count << " instead of " << expected.count << "; ";
            for (std::size_t i = 0; i < each.together; ++i)
            {
                if (found.values[i] != expected.values[i])
                    difference << "value " << i << " is " << std::hex << found.values[i] << " instead of "
                               << expected.values[i] << std::dec << "; ";
                if (found.forms[i] != expected.forms[i])
                    difference << "form " << i << " is " << int{found.forms[i]} << " instead of "
                               << int{expected.forms[i]} << "; ";
            }
            if (!(messages == m_log.Take()))
                difference << "messages differ; ";
            if (runs.IsEndOfRecord() != single.IsEndOfRecord() ||
                static_cast<const char*>(runs) != static_cast<const char*>(single))
                difference << "places differ; ";
            if (difference.tellp() != 0)
                difference << "in run " << run << " of " << each.together;
            if (runs.IsEndOfRecord())
                break;
            // Sometimes the rest of a bad field is read as the next one.
            if (!found.isGood && run % 2 == 0)
            {
                runs.SkipField();
                single.SkipField();
            }
            runs.AdvancePtr();
            single.AdvancePtr();
        }
        return difference.str();
    }

private:
    static constexpr std::uint8_t noForm = 0x7F;

    template <class Value>
    struct Read
    {
        bool isGood = true;
        std::size_t count = 0;
        std::vector<std::uint64_t> values; ///< their bits
        std::vector<std::uint8_t> forms;
    };

    /// What no field gives.
    template <class Value>
    static constexpr Value untouched = static_cast<Value>(-471'147'114.7);

    template <class Value, class Cursor>
    static Read<Value> ReadRun(Cursor& cursor, const RunCase& each)
    {
        // On the heap, so that a sanitizer sees what is written behind them.
        std::vector<Value> values(each.together, untouched<Value>);
        std::vector<TextFieldForm> forms(each.together, static_cast<TextFieldForm>(noForm));
        Read<Value> read;
        read.count = each.together + 1;
        if constexpr (std::is_same_v<Value, int>)
            read.isGood = cursor.ReadInts(values, each.separator, read.count);
        else
            read.isGood = cursor.ReadReals(values, each.separator, read.count, forms);
        for (std::size_t i = 0; i < each.together; ++i)
        {
            read.values.push_back(BitsOf(values[i]));
            read.forms.push_back(static_cast<std::uint8_t>(forms[i]));
        }
        return read;
    }

    template <class Value>
    Read<Value> ReadOneByOne(SlowDelimitedCursor& cursor, const RunCase& each)
    {
        Read<Value> read;
        read.values.assign(each.together, BitsOf(untouched<Value>));
        read.forms.assign(each.together, noForm);
        while (read.isGood && read.count < each.together)
        {
            if (std::is_same_v<Value, double>)
                read.forms[read.count] = FormAt(cursor, each);
            Value value = untouched<Value>;
            if constexpr (std::is_same_v<Value, int>)
                read.isGood = cursor.ReadInt(value);
            else
                read.isGood = cursor.ReadReal(value);
            read.values[read.count] = BitsOf(value);
            if (!read.isGood)
                break;
            ++read.count;
            if (cursor.IsEndOfRecord() || *cursor != each.separator || read.count == each.together)
                break;
            cursor.AdvancePtr();
        }
        return read;
    }

    /// By the text as it lies behind the cursor, which only goes forward.
    std::uint8_t FormAt(const char* cursor, const RunCase& each)
    {
        while (m_place < m_places.size() && m_places[m_place] != cursor)
            ++m_place;
        std::uint8_t form = 0;
        for (std::size_t i = m_place; i < m_places.size(); ++i)
        {
            const char c = *m_places[i];
            if (each.ends.find(c) != std::string::npos)
                break;
            if (c != ' ')
                form =
                    std::max<std::uint8_t>(form, std::string_view(".DEde").find(c) != std::string_view::npos ? 2 : 1);
        }
        return form;
    }

    static std::uint64_t BitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }
    static std::uint64_t BitsOf(int value) { return static_cast<std::uint32_t>(value); }

    std::vector<const char*> m_places; ///< of the record's characters, one after the other
    std::size_t m_place = 0;
    ThreadLog m_log;
    CTextInputOutputFile m_file;
};

}
