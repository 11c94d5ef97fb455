#pragma once

// What of a file is the part, and where it stands: which entities are geometry for themselves, which are there for
// others alone, and which come by way of subfigures and arrays, at each of their places.
//
//     const iges::Part part(file);
//     for (const iges::Entry& entry : file.Directory())
//         if (part.Has(entry.number))
//             part.Show(entry.number, part.NumbersOf(entry), receiver);
//
// The file must outlive it. It belongs to one thread, but for what is said below.

#include "examples/iges/IgesFile.h"
#include "examples/iges/Places.h"

#include <limits>
#include <set>
#include <span>

namespace iges
{

/// Gets the shapes of a part.
class Receiver
{
public:
    /// What it shows of one copy, false if there can be no more.
    using ShowCopy = std::function<bool(Receiver& receiver, const Transform& transform)>;

    virtual ~Receiver() = default;

    /// How far what is drawn for an offset curve may be from it.
    virtual double Error() const = 0;
    virtual void Add(const Shape& shape, const Transform& transform) = 0;
    /// `transform` is that of the array: it moves the places as well.
    virtual void AddCopies(const Places& places, const Transform& transform, const ShowCopy& show) = 0;
};

class Part
{
public:
    static constexpr std::size_t all = std::numeric_limits<std::size_t>::max();

    /// Copies and bases of offset curves are read again each time, and no more of them than these fields: a small file
    /// could ask for it without end.
    explicit Part(const File& file, std::int64_t mostFields = 30'000'000);

    /// Whether an entity is drawn for itself: it is geometry by its directory entry, neither a curve in a surface's
    /// parameters nor an axis of revolution nor a location of a surface, and not in a subfigure's definition.
    bool Has(int directory) const;

    /// Hands on the shapes of an entity, those of all of its copies if it is a subfigure or an array. `numbers` are its
    /// record's. What is wrong is given back in words, null if nothing is.
    const wchar_t* Show(int directory, std::span<const double> numbers, Receiver& receiver);

    /// Whether Show and TroubleOf count what they read again of such an entity. Of others any thread may call them.
    static bool ReadsAgain(const Entry& entry);

    /// What is wrong with an entity's numbers.
    const wchar_t* TroubleOf(const Entry& entry, std::span<const double> numbers) const;

    /// The first of an entity's record, or all. Any thread may call.
    std::vector<double> NumbersOf(const Entry& entry, std::size_t most = all) const;

private:
    /// The way to what is shown through subfigures and arrays.
    struct Walk
    {
        int depth = 0;
        const wchar_t* trouble = nullptr;
    };

    void FindReferences();
    void MarkAuxiliary(int directory);
    void MarkPlaced(int directory);
    template <class Predicate>
    void Mark(int directory, const Predicate& hasParts, std::set<int>& marked) const;
    bool MayRead(std::span<const double> numbers) const;
    bool TransformOf(const Entry& entry, Transform& transform) const;
    bool WholeTransformOf(int directory, Transform& transform) const;
    Curve CurveOf(int directory) const;
    const wchar_t* ShapeOf(const Entry& entry, const Numbers& numbers, double error, Shape& shape) const;
    const wchar_t* ShowEntity(const Entry& entry, const Numbers& numbers, const Transform& transform,
                              Receiver& receiver, Walk& walk);
    const wchar_t* ShowCopies(const Numbers& numbers, const Transform& transform, Receiver& receiver, Walk& walk);
    void ShowMembers(int base, const Transform& transform, Receiver& receiver, Walk& walk);

    const File& m_file;
    std::set<int> m_auxiliary;
    std::set<int> m_placed;
    std::map<int, int> m_parents;      ///< of what depends on another entity
    mutable std::int64_t m_fieldsLeft; ///< that may be read again, for all copies and bases together
};

}
