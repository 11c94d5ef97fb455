#include "utility/records/DelimitedTextRecordPtr.h"

#include "utility/records/internal/RunMethods.h"

#include <algorithm>
#include <utility>

using namespace utility::detail;

namespace
{

/// In characters, as long as none has been seen. More text than the fields of a run usually have is not looked at.
constexpr std::size_t usualField = 24;

bool CanStandInANumber(char c) { return std::string_view("0123456789+-. DEde").find(c) != std::string_view::npos; }

}

CDelimitedTextRecordPtr::CDelimitedTextRecordPtr(CTextInputOutputFile* file, std::string_view ends)
    : CInlineTextRecordPtr(file)
{
    for (const char end : ends)
    {
        bool& isEnd = m_isEnd[static_cast<unsigned char>(end)];
        if (isEnd)
            continue;
        isEnd = true;
        m_areApart = m_areApart && !CanStandInANumber(end);
        if (m_endCount < m_ends.size())
            m_ends[m_endCount] = end;
        ++m_endCount;
    }
    m_zeroEnds = std::exchange(m_isEnd['\0'], true);
}

CDelimitedTextRecordPtr::~CDelimitedTextRecordPtr() = default;

bool CDelimitedTextRecordPtr::ReadReals(std::span<double> values, char separator, std::size_t& count,
                                        std::span<TextFieldForm> forms)
{
    return ReadRun(values, separator, count, forms);
}

bool CDelimitedTextRecordPtr::ReadInts(std::span<int> values, char separator, std::size_t& count)
{
    return ReadRun(values, separator, count, {});
}

template <class Value>
bool CDelimitedTextRecordPtr::ReadRun(std::span<Value> values, char separator, std::size_t& count,
                                      std::span<TextFieldForm> forms)
{
    const RunMethod& method = runMethods.Used();
    RunEnds ends{m_ends, m_endCount};
    const auto last = ends.characters.begin() + static_cast<std::ptrdiff_t>(std::min(m_endCount, m_ends.size()));
    const auto place = std::find(ends.characters.begin(), last, separator);
    if (!m_areApart || m_endCount > m_ends.size() || place == last || method.find == nullptr)
        return ReadRunAs<CDelimitedTextRecordPtr>(values, separator, count, forms);
    std::swap(*place, ends.characters.front());

    RunText text;
    RunFields fields;
    const auto formsFrom = [&] { return forms.empty() ? nullptr : &forms[count]; };
    const auto readOne = [&]
    {
        std::size_t one = 0;
        const bool isGood = ReadRunAs<CDelimitedTextRecordPtr>(values.subspan(count, 1), separator, one,
                                                               forms.empty() ? forms : forms.subspan(count, 1));
        count += one;
        return isGood;
    };
    count = 0;
    // Many a run is short, and what is copied behind its end is copied again.
    std::size_t fieldSize = usualField;
    for (std::size_t piece = 256; count != values.size(); piece = RunText::capacity)
    {
        bool isAll = false;
        const std::size_t wanted = (values.size() - count + 2) * fieldSize;
        const std::size_t size = CopyAhead(text.text, std::min(piece, wanted), isAll);
        std::fill_n(text.text + size, RunText::margin, '\0');
        fields.Clear();
        method.find(text, size, ends, fields);
        if (isAll && !fields.endsRun)
        {
            fields.Add(size);
            fields.endsRun = true;
        }
        if (fields.count == 0)
        {
            // It is longer than what was looked at.
            if (!readOne())
                return false;
            if (count == values.size() || *m_pCurrent != separator || IsEndOfRecord())
                return true;
            AdvancePtr();
            continue;
        }
        fieldSize = size / fields.count + 1;

        std::size_t at = 0; // where the cursor stands
        for (std::size_t next = 0; next != fields.count;)
        {
            const std::size_t most = std::min(fields.count - next, values.size() - count);
            std::size_t read = 0;
            if constexpr (std::is_same_v<Value, int>)
                read = method.readInts(text, fields, next, most, &values[count]);
            else
                read = method.readReals(text, fields, next, most, &values[count], formsFrom());
            next += read;
            count += read;
            if (read == 0)
            {
                AdvanceBy(fields.Begin(next) - at);
                at = fields.End(next++);
                if (!readOne())
                    return false;
            }
            if (count == values.size() || (next == fields.count && fields.endsRun))
            {
                AdvanceBy(fields.End(next - 1) - at);
                return true;
            }
        }
        AdvanceBy(fields.End(fields.count - 1) + 1 - at);
    }
    return true;
}
