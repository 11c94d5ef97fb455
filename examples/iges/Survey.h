#pragma once

// What is in an IGES file: how many fields of which kind, and how large the part is.
//
//     iges::Survey survey(file);
//     for (const iges::Record& record : file.Records())
//         survey.Read(record);
//     Show(survey.Integers(), survey.ExtentsOfGeometry());
//
// A survey belongs to one thread, and the file must outlive it.

#include "examples/iges/Geometry.h"
#include "examples/iges/IgesFile.h"

#include <cstdint>
#include <functional>
#include <set>
#include <vector>

namespace iges
{

class Survey
{
public:
    explicit Survey(const File& file);

    /// Reads a record to its end. Each field is handed to `onField`, if that is given.
    void Read(const Record& record, const std::function<void(const Field&)>& onField = nullptr);

    std::uint64_t Integers() const { return m_integers; }
    std::uint64_t Reals() const { return m_reals; }
    std::uint64_t Texts() const { return m_texts; }
    /// How many fields each record has, the type number in front included.
    const StatSeries& RecordLengths() const { return m_recordLengths; }

    /// In the unit of the file, of the entities that are geometry by their directory entry, and neither curves in
    /// a surface's parameters nor axes of revolution. The transformations that an entry names are applied; those that
    /// come by way of a subfigure or an assembly are not.
    const Extents& ExtentsOfGeometry() const { return m_extents; }

private:
    void FindAuxiliaryCurves();
    void MarkAuxiliary(int directory);
    void Measure(const Entry& entry, int directory, const std::vector<double>& numbers);
    bool TransformOf(const Entry& entry, Transform& transform) const;
    std::vector<double> NumbersOf(const Entry& entry) const;

    const File& m_file;
    std::set<int> m_auxiliary;
    std::vector<double> m_numbers;
    Field m_field;
    std::uint64_t m_integers = 0;
    std::uint64_t m_reals = 0;
    std::uint64_t m_texts = 0;
    StatSeries m_recordLengths;
    Extents m_extents;
};

}
