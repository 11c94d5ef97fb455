#include "examples/iges/Survey.h"

#include <limits>

namespace iges
{

namespace
{

/// The box of what it gets.
class Measurer final : public Receiver
{
public:
    explicit Measurer(Extents& extents) : m_extents(extents) {}

    double Error() const override { return std::numeric_limits<double>::infinity(); }

    void Add(const Shape& shape, const Transform& transform) override
    {
        for (const Point& point : shape.points)
            m_extents.Add(transform(point));
        for (const Point& point : shape.hull)
            m_extents.Add(transform(point));
        AddToExtents(shape.curve, transform, m_extents);
        for (const Spline& spline : shape.splines)
            AddToExtents(spline, transform, m_extents);
    }

    /// One copy is measured, and its box is moved.
    void AddCopies(const Places& places, const Transform& transform, const ShowCopy& show) override
    {
        Extents one;
        Measurer measurer(one);
        show(measurer, transform.After(places.Common()));
        if (one.IsEmpty())
            return;
        for (const Point& place : places.Outermost())
        {
            const Point moved = transform.Rotated(place);
            m_extents.Add(one.Low() + moved);
            m_extents.Add(one.High() + moved);
        }
    }

private:
    Extents& m_extents;
};

}

Survey::Survey(const File& file, Part& part, const Extents& known) : m_file(file), m_part(part), m_known(known)
{
    m_found.extents = m_known;
}

void Survey::Read(const Record& record, const std::function<void(const Field&)>& onField)
{
    if (!ReadAhead(record, onField))
        Measure(record);
}

bool Survey::ReadAhead(const Record& record, const std::function<void(const Field&)>& onField)
{
    CTextInputOutputFile* const messages = m_file.Messages();
    if (!record.trouble.empty())
        Complain(*messages, record.trouble);
    const bool isWhole = !onField && m_record.Read(record, m_file.FieldDelimiters());
    if (isWhole)
    {
        m_found.integers += m_record.Integers();
        m_found.reals += m_record.Reals();
    }
    else
        ReadFields(record, onField);
    const std::span<const double> numbers = isWhole ? m_record.Numbers() : m_numbers;
    m_found.recordLengths.AddVal(static_cast<double>(numbers.size()));
    LogFile(LogSeverityInformation, GetThreadDatabase())
        << L"Lines: " << record.lineCount << L", fields: " << numbers.size();

    const Entry* const entry = m_file.Find(record.directory);
    if (entry == nullptr)
        Complain(*messages, L"There is no such directory entry.");
    else if (entry->record != &record)
        Complain(*messages, L"The directory entry has another record already.");
    else if (Numbers(numbers).IntegerAt(0) != entry->type)
        Complain(*messages, L"The record is of another type than the directory entry.");
    else if (Part::ReadsAgain(*entry))
        return false;
    else
        Measure(*entry, numbers);
    return true;
}

void Survey::Measure(const Record& record)
{
    const Entry& entry = *m_file.Find(record.directory);
    Measure(entry, m_part.NumbersOf(entry));
}

void Survey::Add(const Findings& other)
{
    m_found.integers += other.integers;
    m_found.reals += other.reals;
    m_found.texts += other.texts;
    for (const double length : other.recordLengths.values)
        m_found.recordLengths.AddVal(length);
    if (!other.extents.IsEmpty())
    {
        m_found.extents.Add(other.extents.Low());
        m_found.extents.Add(other.extents.High());
    }
}

void Survey::ReadFields(const Record& record, const std::function<void(const Field&)>& onField)
{
    m_numbers.clear();
    RecordPtr cursor(m_file.Messages(), m_file.FieldDelimiters(), record.Lines(), record.LineNumbers());
    do
    {
        if (cursor.ReadField(m_field))
        {
            m_found.integers += m_field.kind == FieldKind::integer;
            m_found.reals += m_field.kind == FieldKind::real;
            m_found.texts += m_field.kind == FieldKind::text;
        }
        m_numbers.push_back(m_field.Number());
        if (onField)
            onField(m_field);
    } while (cursor.NextField());
}

/// What does not stand for itself is looked at just for what is wrong with it.
void Survey::Measure(const Entry& entry, std::span<const double> numbers)
{
    Measurer measurer(m_found.extents);
    const wchar_t* const trouble =
        m_part.Has(entry.number) ? m_part.Show(entry.number, numbers, measurer) : m_part.TroubleOf(entry, numbers);
    if (trouble != nullptr)
        Complain(*m_file.Messages(), trouble);
}

}
