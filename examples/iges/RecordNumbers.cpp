#include "examples/iges/RecordNumbers.h"

#include <cstring>
#include <limits>
#include <span>

namespace iges
{

namespace
{

using enum TextFieldForm;
constexpr std::array manyReals = {real, real, real, real, real, real, real, real};

bool IsInteger(double value)
{
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    return (value >= lowest) & (value <= highest);
}

}

/// Lines are put end to end, which is the one place where text is copied: hundreds of lines in a list would take longer
/// than the numbers in them.
bool RecordNumbers::Read(const Record& record, Delimiters delimiters)
{
    m_text.resize(record.lineCount * Record::width);
    char* to = m_text.data();
    for (const LineRun& run : record.runs)
    {
        for (int i = 0; i < run.count; ++i)
        {
            std::memcpy(to, run[i], Record::width);
            to += Record::width;
        }
    }
    const std::array<std::string_view, 1> line = {m_text};
    RecordPtr cursor(nullptr, delimiters, line);
    // Such a delimiter would go on with a number that is read as a real, which integers are here.
    if (cursor.IsExponentChar(delimiters.parameter) || cursor.IsExponentChar(delimiters.record))
        return false;

    m_count = 0;
    m_integers = 0;
    m_reals = 0;
    for (;; cursor.AdvancePtr())
    {
        if (m_numbers.size() - m_count < fieldsAtOnce)
            m_numbers.resize(2 * m_numbers.size() + fieldsAtOnce);
        const std::span<double> numbers = std::span(m_numbers).subspan(m_count, fieldsAtOnce);
        std::size_t count = 0;
        if (!cursor.ReadReals(numbers, delimiters.parameter, count, m_forms))
            return false;
        std::size_t integers = 0;
        std::size_t reals = 0;
        bool areGood = true;
        for (std::size_t i = 0; i < count; ++i)
        {
            if (count - i >= manyReals.size() && std::memcmp(&m_forms[i], manyReals.data(), manyReals.size()) == 0)
            {
                i += manyReals.size() - 1;
                reals += manyReals.size();
                continue;
            }
            const bool isWhole = m_forms[i] == TextFieldForm::whole;
            areGood &= !isWhole | IsInteger(numbers[i]);
            numbers[i] += isWhole ? 0.0 : -0.0; // an integer has no negative zero
            integers += isWhole;
            reals += m_forms[i] == TextFieldForm::real;
        }
        if (!areGood)
            return false;
        m_integers += integers;
        m_reals += reals;
        m_count += count;
        if (*cursor != delimiters.parameter)
            return *cursor == delimiters.record;
    }
}

}
