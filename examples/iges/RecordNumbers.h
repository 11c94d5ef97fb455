#pragma once

// The numbers of a record, all at once, as most records have nothing else.
//
//     RecordNumbers record;
//     if (record.Read(file.Records()[0], file.FieldDelimiters()))
//         Measure(record.Numbers());
//
// One object for many records keeps its memory. It belongs to one thread.

#include "examples/iges/IgesFile.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace iges
{

class RecordNumbers
{
public:
    /// False, and nothing is known then, if the record has a text, or something bad: it is to be read field by field.
    bool Read(const Record& record, Delimiters delimiters);

    /// As Field::Number has them.
    std::span<const double> Numbers() const { return std::span(m_numbers).first(m_count); }
    std::uint64_t Integers() const { return m_integers; }
    std::uint64_t Reals() const { return m_reals; }

private:
    static constexpr std::size_t fieldsAtOnce = 512;

    std::string m_text;
    std::vector<double> m_numbers; ///< and room for more
    std::size_t m_count = 0;
    std::array<TextFieldForm, fieldsAtOnce> m_forms;
    std::uint64_t m_integers = 0;
    std::uint64_t m_reals = 0;
};

}
