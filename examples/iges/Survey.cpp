#include "examples/iges/Survey.h"

#include <algorithm>

namespace iges
{

namespace
{

/// Keeps a file from issuing messages for a scope: what is read ahead is read again, and then they come.
class Silence
{
public:
    explicit Silence(CTextInputOutputFile& file) : m_file(file), m_issued(file.IssueMessages())
    {
        m_file.SetIssueMessages(false);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() { m_file.SetIssueMessages(m_issued); }

private:
    CTextInputOutputFile& m_file;
    bool m_issued;
};

enum EntityType : int
{
    compositeCurve = 102,
    surfaceOfRevolution = 120,
    transformationMatrix = 124,
    boundary = 141,
    curveOnSurface = 142,
    loop = 508,
};

/// Hands on the pointers to the curves that bound a surface in its parameters, and to the axes of revolution.
template <class Action>
void ForEachAuxiliaryCurve(EntityType type, const std::vector<double>& numbers, const Action& action)
{
    std::size_t at = 0;
    const auto next = [&] { return IntegerAt(numbers, at++); };
    switch (type)
    {
    case surfaceOfRevolution: // axis, curve, angles
        at = 1;
        action(next());
        break;
    case curveOnSurface: // how made, surface, curve
        at = 3;
        action(next());
        break;
    case boundary: // kind, preference, surface, then for each curve: curve, sense, parametric curves
        at = 4;
        for (int curves = next(); curves > 0 && at < numbers.size(); --curves)
        {
            at += 2;
            for (int count = next(); count > 0 && at < numbers.size(); --count)
                action(next());
        }
        break;
    case loop: // for each edge: kind, list, index, sense, parametric curves with a flag in front of each
        at = 1;
        for (int edges = next(); edges > 0 && at < numbers.size(); --edges)
        {
            at += 4;
            for (int count = next(); count > 0 && at < numbers.size(); --count)
            {
                ++at;
                action(next());
            }
        }
        break;
    default:
        break;
    }
}

}

Survey::Survey(const File& file) : m_file(file) { FindAuxiliaryCurves(); }

void Survey::Read(const Record& record, const std::function<void(const Field&)>& onField)
{
    CTextInputOutputFile* const messages = m_file.Messages();
    if (!record.trouble.empty())
        Complain(*messages, record.trouble);
    m_numbers.clear();
    RecordPtr cursor(messages, m_file.FieldDelimiters(), record.lines, record.numbers);
    do
    {
        if (cursor.ReadField(m_field))
        {
            m_integers += m_field.kind == FieldKind::integer;
            m_reals += m_field.kind == FieldKind::real;
            m_texts += m_field.kind == FieldKind::text;
        }
        m_numbers.push_back(m_field.Number());
        if (onField)
            onField(m_field);
    } while (cursor.NextField());
    m_recordLengths.AddValNotArray(static_cast<double>(m_numbers.size()));
    LogFile(LogSeverityInformation, GetThreadDatabase())
        << L"Lines: " << record.lines.size() << L", fields: " << m_numbers.size();

    const Entry* const entry = m_file.Find(record.directory);
    if (entry == nullptr)
        Complain(*messages, L"There is no such directory entry.");
    else if (entry->record != &record)
        Complain(*messages, L"The directory entry has another record already.");
    else if (IntegerAt(m_numbers, 0) != entry->type)
        Complain(*messages, L"The record is of another type than the directory entry.");
    else
        Measure(*entry, record.directory, m_numbers);
}

void Survey::Measure(const Entry& entry, int directory, const std::vector<double>& numbers)
{
    if (entry.use != 0 || m_auxiliary.contains(directory))
        return;
    Transform transform;
    if (!TransformOf(entry, transform))
        Complain(*m_file.Messages(), L"The transformation cannot be read, and the extents go without this entity.");
    else if (!AddGeometry(numbers, transform, m_extents))
        Complain(*m_file.Messages(), L"The record ends before the numbers that it announces.");
}

/// The flag of an entry is not to be relied on: many writers leave it 0.
void Survey::FindAuxiliaryCurves()
{
    for (const auto& [number, entry] : m_file.Directory())
    {
        const auto type = static_cast<EntityType>(entry.type);
        if (type == surfaceOfRevolution || type == boundary || type == curveOnSurface || type == loop)
            ForEachAuxiliaryCurve(type, NumbersOf(entry), [this](int curve) { MarkAuxiliary(curve); });
    }
}

void Survey::MarkAuxiliary(int directory)
{
    std::vector<int> marked = {directory};
    while (!marked.empty())
    {
        const int curve = marked.back();
        marked.pop_back();
        const Entry* const entry = m_file.Find(curve);
        if (entry == nullptr || !m_auxiliary.insert(curve).second || entry->type != compositeCurve)
            continue;
        const std::vector<double> numbers = NumbersOf(*entry);
        std::size_t at = 1;
        for (int parts = IntegerAt(numbers, at++); parts > 0 && at < numbers.size(); --parts)
            marked.push_back(IntegerAt(numbers, at++));
    }
}

bool Survey::TransformOf(const Entry& entry, Transform& transform) const
{
    constexpr int deepest = 16; // they could name each other
    int depth = 0;
    for (int number = entry.matrix; number != 0; ++depth)
    {
        const Entry* const matrix = m_file.Find(number);
        if (matrix == nullptr || matrix->type != transformationMatrix || depth == deepest)
            return false;
        const std::vector<double> numbers = NumbersOf(*matrix);
        if (numbers.size() < 13)
            return false;
        Transform outer;
        for (std::size_t row = 0; row < 3; ++row)
        {
            const std::size_t at = 1 + 4 * row;
            outer.rotation[row] = {numbers[at], numbers[at + 1], numbers[at + 2]};
            outer.translation[row] = numbers[at + 3];
        }
        transform = outer.After(transform);
        number = matrix->matrix;
    }
    return true;
}

std::vector<double> Survey::NumbersOf(const Entry& entry) const
{
    std::vector<double> numbers;
    if (entry.record == nullptr)
        return numbers;
    const Silence silence(*m_file.Messages());
    RecordPtr cursor(m_file.Messages(), m_file.FieldDelimiters(), entry.record->lines);
    Field field;
    do
    {
        cursor.ReadField(field);
        numbers.push_back(field.Number());
    } while (cursor.NextField());
    return numbers;
}

}
