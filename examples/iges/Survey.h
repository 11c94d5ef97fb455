#pragma once

// What is in an IGES file: how many fields of which kind, and how large the part is.
//
//     iges::Part part(file);
//     iges::Survey survey(file, part);
//     for (const iges::Record& record : file.Records())
//         survey.Read(record);
//     Show(survey.Integers(), survey.ExtentsOfGeometry());
//
// A survey belongs to one thread, and file and part must outlive it.

#include "examples/iges/Part.h"
#include "examples/iges/RecordNumbers.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace iges
{

class Survey
{
public:
    Survey(const File& file, Part& part);

    /// Reads a record to its end. Each field is handed to `onField`, if that is given.
    void Read(const Record& record, const std::function<void(const Field&)>& onField = nullptr);

    std::uint64_t Integers() const { return m_integers; }
    std::uint64_t Reals() const { return m_reals; }
    std::uint64_t Texts() const { return m_texts; }
    /// How many fields each record has, the type number in front included.
    const StatSeries& RecordLengths() const { return m_recordLengths; }

    /// In the unit of the file, of what the part has. They are exact for curves, and enclose surfaces.
    const Extents& ExtentsOfGeometry() const { return m_extents; }

private:
    void ReadFields(const Record& record, const std::function<void(const Field&)>& onField);
    const wchar_t* Measure(const Entry& entry, int directory, const std::vector<double>& numbers);

    const File& m_file;
    Part& m_part;
    RecordNumbers m_record;
    std::vector<double> m_numbers;
    Field m_field;
    std::uint64_t m_integers = 0;
    std::uint64_t m_reals = 0;
    std::uint64_t m_texts = 0;
    StatSeries m_recordLengths;
    Extents m_extents;
};

}
