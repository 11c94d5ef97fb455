#pragma once

// The text cursor for formats that say themselves what ends a field: the ends are characters that are known when the
// program runs. No virtual call is made for a character, and runs of numbers are read several at a time.
//
//     CDelimitedTextRecordPtr cursor(&file, ",;");
//     cursor.Add(line, line + 63);
//     cursor.Add(line + 81, line + 81 + 63);
//     std::vector<double> values(1000);
//     std::size_t count;
//     if (!cursor.ReadReals(values, ',', count))
//         cursor.SkipField(); // a bad field stands behind the `count` good ones
//     const bool isWhole = *cursor == ';';
//
// What the reads give is to the bit what CTextRecordPtr gives, its messages and the place of the cursor included.

#include "utility/records/InlineTextRecordPtr.h"

#include <array>
#include <string_view>

/// The end of the record ends a field as well. A zero byte in the text does so only if it is one of the ends.
class UTILITY_API CDelimitedTextRecordPtr : public CInlineTextRecordPtr<CDelimitedTextRecordPtr>
{
public:
    /// An empty record: Add or Reset comes before the first read. Messages go to `file`; with null there are none.
    CDelimitedTextRecordPtr(CTextInputOutputFile* file, std::string_view ends);
    ~CDelimitedTextRecordPtr() override;

    void SkipBlanks() final { CTextRecordPtr::SkipBlanks(); }
    bool IsTerminator(char c) final
    {
        return m_isEnd[static_cast<unsigned char>(c)] && (c != '\0' || m_zeroEnds || IsEndOfRecord());
    }
    bool IsExponentChar(char c) const final { return CTextRecordPtr::IsExponentChar(c); }

    /// CTextRecordPtr's reads, with the same results. They are fast for up to eight ends, none of which is a blank or can
    /// stand in a number, and for a separator that is one of them.
    bool ReadReals(std::span<double> values, char separator, std::size_t& count, std::span<TextFieldForm> forms = {});
    bool ReadInts(std::span<int> values, char separator, std::size_t& count);

private:
    template <class Value>
    UTILITY_LOCAL bool ReadRun(std::span<Value> values, char separator, std::size_t& count,
                               std::span<TextFieldForm> forms);

    std::array<bool, 256> m_isEnd{};
    bool m_zeroEnds = false;
    bool m_areApart = true; ///< none of them can stand in a number
    std::size_t m_endCount = 0;
    std::array<char, 8> m_ends{};
};
