#include "examples/iges/Part.h"

#include "examples/iges/RecordNumbers.h"

#include <algorithm>
#include <array>
#include <limits>

namespace iges
{

namespace
{

enum EntityType : int
{
    compositeCurve = 102,
    transformationMatrix = 124,
    offsetCurve = 130,
    subfigureDefinition = 308,
    group = 402,
    subfigureInstance = 408,
};

enum EntityUse : int
{
    geometry = 0,
    definition = 2,
};

/// What an entity names another one for.
enum class Role
{
    part,      ///< it is made of it
    auxiliary, ///< it takes measures from it, which nobody sees
};

/// The types of which ForEachReference knows what they refer to.
bool MayRefer(int type)
{
    constexpr std::array types = {102, 108, 118, 120, 122, 130, 140, 141, 142, 143, 144, 186,
                                  190, 192, 194, 196, 198, 308, 402, 504, 508, 510, 514};
    return std::ranges::binary_search(types, type);
}

/// Hands on what an entity refers to as action(Role, number).
template <class Action>
void ForEachReference(const Entry& entry, const Numbers& numbers, const Action& action)
{
    std::size_t at = 1;
    const auto next = [&] { return numbers.IntegerAt(at++); };
    const auto one = [&](std::size_t index, Role role) { action(role, numbers.IntegerAt(index)); };
    // So many groups of numbers, in each of which one refers.
    const auto list = [&](std::size_t count, std::size_t first, std::size_t stride, Role role)
    {
        at = first;
        for (int left = numbers.IntegerAt(count); left > 0 && at < numbers.Size(); --left, at += stride)
            action(role, numbers.IntegerAt(at));
    };
    switch (entry.type)
    {
    case compositeCurve: // count, curves
    case 514:            // count, faces with a flag each
    case 504:            // count, edges of five numbers, the curve in front
        list(1, 2, entry.type == compositeCurve ? 1 : entry.type == 514 ? 2 : 5, Role::part);
        break;
    case 108: // four coefficients, bounding curve
    case 140: // direction, distance, surface
        one(5, Role::part);
        break;
    case 118: // two rails
        one(1, Role::part);
        one(2, Role::part);
        break;
    case 120: // axis, curve
        one(1, Role::auxiliary);
        one(2, Role::part);
        break;
    case 122: // directrix
    case offsetCurve:
        one(1, Role::part);
        break;
    case 141: // kind, preference, surface, then for each curve: curve, sense, curves in parameters
        one(3, Role::part);
        at = 4;
        for (int curves = next(); curves > 0 && at < numbers.Size(); --curves)
        {
            action(Role::part, next());
            ++at;
            for (int count = next(); count > 0 && at < numbers.Size(); --count)
                action(Role::auxiliary, next());
        }
        break;
    case 142: // how made, surface, curve in parameters, curve
        one(2, Role::part);
        one(3, Role::auxiliary);
        one(4, Role::part);
        break;
    case 143: // kind, surface, boundaries
        one(2, Role::part);
        list(3, 4, 1, Role::part);
        break;
    case 144: // surface, kind, inner boundaries behind the outer one
        one(1, Role::part);
        one(4, Role::part);
        list(3, 5, 1, Role::part);
        break;
    case 186: // shell, sense, further shells with a sense each
        one(1, Role::part);
        list(3, 4, 2, Role::part);
        break;
    case 190: // location, directions
    case 192:
    case 194:
    case 196:
    case 198:
        one(1, Role::auxiliary);
        break;
    case subfigureDefinition: // depth, name, members
        list(3, 4, 1, Role::part);
        break;
    case group:
        if (entry.form == 1 || entry.form == 7 || entry.form == 14 || entry.form == 15)
            list(1, 2, 1, Role::part);
        break;
    case 508: // for each edge: kind, list, index, sense, curves in parameters with a flag in front of each
        for (int edges = next(); edges > 0 && at < numbers.Size(); --edges)
        {
            ++at;
            action(Role::part, next());
            at += 2;
            for (int count = next(); count > 0 && at < numbers.Size(); --count)
            {
                ++at;
                action(Role::auxiliary, next());
            }
        }
        break;
    case 510: // surface, loops, with a flag in front
        one(1, Role::part);
        list(2, 4, 1, Role::part);
        break;
    default:
        break;
    }
}

}

Part::Part(const File& file, std::int64_t mostFields) : m_file(file), m_fieldsLeft(mostFields) { FindReferences(); }

bool Part::Has(int directory) const
{
    const Entry* const entry = m_file.Find(directory);
    return entry != nullptr && entry->use == geometry && !m_auxiliary.contains(directory) &&
           !m_placed.contains(directory);
}

const wchar_t* Part::Show(int directory, std::span<const double> numbers, Receiver& receiver)
{
    Transform transform;
    if (!WholeTransformOf(directory, transform))
        return L"The transformation cannot be read, and the extents go without this entity.";
    Walk walk;
    const wchar_t* const trouble = ShowEntity(*m_file.Find(directory), Numbers(numbers), transform, receiver, walk);
    return trouble != nullptr ? trouble : walk.trouble;
}

bool Part::ReadsAgain(const Entry& entry) { return Places::AreThoseOf(entry.type) || entry.type == offsetCurve; }

const wchar_t* Part::TroubleOf(const Entry& entry, std::span<const double> numbers) const
{
    if (Places::AreThoseOf(entry.type))
        return Places().Read(Numbers(numbers));
    Shape shape;
    return ShapeOf(entry, Numbers(numbers), std::numeric_limits<double>::infinity(), shape);
}

/// The flags of an entry are not to be relied on: many writers leave them 0.
void Part::FindReferences()
{
    for (const Entry& entry : m_file.Directory())
    {
        if (!MayRefer(entry.type) && !Places::AreThoseOf(entry.type))
            continue;
        const std::vector<double> numbers = NumbersOf(entry);
        if (Places::AreThoseOf(entry.type))
            MarkPlaced(Numbers(numbers).IntegerAt(1));
        else if (entry.type == subfigureDefinition)
            MarkPlaced(entry.number);
        ForEachReference(entry, Numbers(numbers),
                         [&, parent = entry.number](Role role, int reference)
                         {
                             const Entry* const part = m_file.Find(reference);
                             if (role == Role::auxiliary)
                                 MarkAuxiliary(reference);
                             else if (part != nullptr && part->isDependent)
                                 m_parents.emplace(reference, parent);
                         });
    }
}

void Part::MarkAuxiliary(int directory)
{
    Mark(
        directory, [](const Entry& entry) { return entry.type == compositeCurve; }, m_auxiliary);
}

/// What is placed by others, with all that it is made of.
void Part::MarkPlaced(int directory)
{
    Mark(
        directory, [](const Entry& entry) { return MayRefer(entry.type); }, m_placed);
}

template <class Predicate>
void Part::Mark(int directory, const Predicate& hasParts, std::set<int>& marked) const
{
    std::vector<int> pending = {directory};
    while (!pending.empty())
    {
        const int number = pending.back();
        pending.pop_back();
        const Entry* const entry = m_file.Find(number);
        if (entry == nullptr || !marked.insert(number).second || !hasParts(*entry))
            continue;
        const std::vector<double> numbers = NumbersOf(*entry);
        ForEachReference(*entry, Numbers(numbers),
                         [&](Role role, int reference)
                         {
                             if (role == Role::part)
                                 pending.push_back(reference);
                         });
    }
}

/// Counts what is read once more. A small file may ask for that without end.
bool Part::MayRead(std::span<const double> numbers) const
{
    constexpr std::int64_t fieldsOfAnEntry = 100;
    m_fieldsLeft -= fieldsOfAnEntry + static_cast<std::int64_t>(numbers.size());
    return m_fieldsLeft >= 0;
}

/// Those that the entry names, one after the other. A subfigure is moved to its place behind them.
bool Part::TransformOf(const Entry& entry, Transform& transform) const
{
    constexpr int deepest = 16; // they could name each other
    int depth = 0;
    for (int number = entry.matrix; number != 0; ++depth)
    {
        const Entry* const matrix = m_file.Find(number);
        if (matrix == nullptr || matrix->type != transformationMatrix || depth == deepest)
            return false;
        const std::vector<double> numbers = NumbersOf(*matrix, 13);
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
    if (entry.type == subfigureInstance)
        transform.translation = transform.translation + Numbers(NumbersOf(entry, 5)).PointAt(2);
    return true;
}

/// With those of the entities that it depends on.
bool Part::WholeTransformOf(int directory, Transform& transform) const
{
    constexpr int deepest = 100; // they could depend on each other
    for (int depth = 0; depth < deepest; ++depth)
    {
        if (!TransformOf(*m_file.Find(directory), transform))
            return false;
        const auto parent = m_parents.find(directory);
        if (parent == m_parents.end())
            return true;
        directory = parent->second;
    }
    return false;
}

/// The base of an offset curve, empty if it is none.
Curve Part::CurveOf(int directory) const
{
    const Entry* const entry = m_file.Find(directory);
    Transform transform;
    if (entry == nullptr || entry->type == offsetCurve || m_fieldsLeft < 0 || !TransformOf(*entry, transform))
        return {};
    const std::vector<double> numbers = NumbersOf(*entry);
    Shape shape;
    if (!MayRead(numbers))
        return {};
    if (entry->type != compositeCurve)
        AddShape(Numbers(numbers), entry->form, shape);
    else
    {
        // The parameter goes on where it has been at the end of the curve before.
        double end = 0.0;
        ForEachReference(*entry, Numbers(numbers),
                         [&](Role, int reference)
                         {
                             const Entry* const part = m_file.Find(reference);
                             if (part == nullptr || part->type == compositeCurve)
                                 return;
                             Curve curve = CurveOf(reference);
                             const double shift = curve.empty() ? 0.0 : end - curve.front().start;
                             for (Piece& piece : curve)
                             {
                                 piece.start += shift;
                                 piece.end += shift;
                                 end = piece.end;
                                 shape.curve.push_back(std::move(piece));
                             }
                         });
    }
    return Transformed(CurvesOf(shape), transform);
}

const wchar_t* Part::ShapeOf(const Entry& entry, const Numbers& numbers, double error, Shape& shape) const
{
    if (entry.type != offsetCurve)
        return AddShape(numbers, entry.form, shape);
    const Curve base = CurveOf(numbers.IntegerAt(1));
    if (base.empty())
        return L"The base of the offset curve is no curve.";
    return AddOffsetShape(numbers, base, error, shape);
}

const wchar_t* Part::ShowEntity(const Entry& entry, const Numbers& numbers, const Transform& transform,
                                Receiver& receiver, Walk& walk)
{
    if (Places::AreThoseOf(entry.type))
        return ShowCopies(numbers, transform, receiver, walk);
    Shape shape;
    const wchar_t* const trouble = ShapeOf(entry, numbers, receiver.Error() / transform.Growth(), shape);
    receiver.Add(shape, transform);
    return trouble;
}

const wchar_t* Part::ShowCopies(const Numbers& numbers, const Transform& transform, Receiver& receiver, Walk& walk)
{
    constexpr int deepest = 50;
    Places places;
    if (const wchar_t* const trouble = places.Read(numbers))
        return trouble;
    if (m_file.Find(places.Base()) == nullptr)
        return L"There is nothing to place.";
    if (walk.depth == deepest)
        walk.trouble = L"The subfigure contains itself, or is nested too deep.";
    if (walk.trouble != nullptr)
        return nullptr;
    ++walk.depth;
    receiver.AddCopies(places, transform,
                       [&](Receiver& inner, const Transform& copy)
                       {
                           ShowMembers(places.Base(), copy, inner, walk);
                           return walk.trouble == nullptr;
                       });
    --walk.depth;
    return nullptr;
}

/// What is wrong with a member is said where its own record is read.
void Part::ShowMembers(int base, const Transform& transform, Receiver& receiver, Walk& walk)
{
    std::set<int> seen;
    std::vector<std::pair<int, Transform>> pending = {{base, transform}};
    while (!pending.empty() && walk.trouble == nullptr)
    {
        const auto [number, outer] = pending.back();
        pending.pop_back();
        const Entry* const entry = m_file.Find(number);
        Transform inner;
        if (entry == nullptr || !seen.insert(number).second || m_auxiliary.contains(number) ||
            (entry->use != geometry && entry->use != definition) || !TransformOf(*entry, inner))
            continue;
        const std::vector<double> numbers = NumbersOf(*entry);
        if (!MayRead(numbers))
            walk.trouble = L"There are more copies than are followed.";
        const Transform whole = outer.After(inner);
        ShowEntity(*entry, Numbers(numbers), whole, receiver, walk);
        const bool isDefinition = entry->type == subfigureDefinition;
        if (!MayRefer(entry->type))
            continue;
        ForEachReference(*entry, Numbers(numbers),
                         [&, &outer = outer](Role role, int reference)
                         {
                             const Entry* const part = m_file.Find(reference);
                             if (role == Role::part && part != nullptr)
                                 pending.emplace_back(reference, isDefinition || part->isDependent ? whole : outer);
                         });
    }
}

/// What is wrong with them is said where the record itself is read.
std::vector<double> Part::NumbersOf(const Entry& entry, std::size_t most) const
{
    std::vector<double> numbers;
    if (entry.record == nullptr)
        return numbers;
    RecordNumbers record;
    if (most == all && record.Read(*entry.record, m_file.FieldDelimiters()))
        return {record.Numbers().begin(), record.Numbers().end()};
    RecordPtr cursor(nullptr, m_file.FieldDelimiters(), entry.record->Lines());
    Field field;
    do
    {
        cursor.ReadField(field);
        numbers.push_back(field.Number());
    } while (numbers.size() < most && cursor.NextField());
    return numbers;
}

}
