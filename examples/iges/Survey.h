#pragma once

// What is in an IGES file: how many fields of which kind, and how large the part is.
//
//     iges::Part part(file);
//     iges::Survey survey(file, part);
//     for (const iges::Record& record : file.Records())
//         survey.Read(record);
//     Show(survey.Found().integers, survey.Found().extents);
//
// A survey belongs to one thread, and file and part must outlive it. Several threads may read ahead, each with a survey
// of its own over the same file and part, for one that takes it all in the order of the file:
//
//     if (!ahead.ReadAhead(record))
//         late.push_back(&record);
//     ...
//     survey.Add(ahead.Take());
//     survey.Measure(*late.front());

#include "examples/iges/Part.h"
#include "examples/iges/RecordNumbers.h"

#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace iges
{

struct Findings
{
    std::uint64_t integers = 0;
    std::uint64_t reals = 0;
    std::uint64_t texts = 0;
    /// How many fields each record has, the type number in front included.
    StatSeries recordLengths;
    /// In the unit of the file, of what the part has. They are exact for curves, and enclose surfaces.
    Extents extents;
};

class Survey
{
public:
    /// What `known` encloses need not be measured. It is a part of what is found.
    Survey(const File& file, Part& part, const Extents& known = {});

    /// Reads a record to its end. Each field is handed to `onField`, if that is given.
    void Read(const Record& record, const std::function<void(const Field&)>& onField = nullptr);

    /// The same, but false if the entity is yet to be measured: the part counts what such entities have it read again,
    /// so that what the last of them get depends on their order.
    bool ReadAhead(const Record& record, const std::function<void(const Field&)>& onField = nullptr);

    /// Measures the entity of a record that was read ahead.
    void Measure(const Record& record);

    const Findings& Found() const { return m_found; }

    /// Begins anew.
    Findings Take()
    {
        Findings anew;
        anew.extents = m_known;
        return std::exchange(m_found, std::move(anew));
    }

    /// Takes over what another one found.
    void Add(const Findings& other);

private:
    void ReadFields(const Record& record, const std::function<void(const Field&)>& onField);
    void Measure(const Entry& entry, std::span<const double> numbers);

    const File& m_file;
    Part& m_part;
    Extents m_known;
    RecordNumbers m_record;
    std::vector<double> m_numbers;
    Field m_field;
    Findings m_found;
};

}
