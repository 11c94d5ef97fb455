#pragma once

// What an entity is drawn with, by the layout of its parameters.
//
//     Shape shape;
//     const wchar_t* const trouble = AddShape(numbers, form, shape);
//     AddToExtents(shape.curve, transform, extents);
//
// `numbers` are the fields of its record, the type number in front. What is wrong with them is given back in words, and
// null if nothing is; what can be made out of them is added in any case.

#include "examples/iges/Curve.h"

#include <span>

namespace iges
{

inline constexpr const wchar_t* endsEarly = L"The record ends before the numbers that it announces.";

struct Shape
{
    std::vector<Point> points;
    Curve curve; ///< or several, which need not be connected
    std::vector<Spline> splines;
    std::vector<Point> hull; ///< not drawn: the rest of the entity is between these points
};

/// All of the curves of a shape.
Curve CurvesOf(const Shape& shape);

/// A record's numbers as counts and pointers.
class Numbers
{
public:
    explicit Numbers(std::span<const double> numbers) : m_numbers(numbers) {}

    bool Has(std::size_t start, std::size_t count) const
    {
        return start <= m_numbers.size() && count <= m_numbers.size() - start;
    }
    /// 0 if there is none.
    double At(std::size_t index) const { return index < m_numbers.size() ? m_numbers[index] : 0.0; }
    Point PointAt(std::size_t index) const { return {At(index), At(index + 1), At(index + 2)}; }
    /// As a count or a pointer: 0 if there is none, or not such a one.
    int IntegerAt(std::size_t index) const;
    /// One that leaves room for as many numbers in the record; false if it does not.
    bool CountAt(std::size_t index, std::size_t& count) const;
    std::span<const double> Range(std::size_t start, std::size_t count) const
    {
        return m_numbers.subspan(start, count);
    }
    std::size_t Size() const { return m_numbers.size(); }

private:
    std::span<const double> m_numbers;
};

/// The types are those of `drawnTypes` and `hullTypes`; others add nothing.
const wchar_t* AddShape(const Numbers& numbers, int form, Shape& shape);

/// An offset curve (130), of which the base is another entity. It is drawn within the error.
const wchar_t* AddOffsetShape(const Numbers& numbers, const Curve& base, double error, Shape& shape);

/// In words.
inline constexpr const char* drawnTypes = "circular arcs (100), conic arcs (104), copious data (106), lines (110),\n"
                                          "parametric splines (112), points (116), B-spline curves (126) and\n"
                                          "offset curves (130)";
inline constexpr const char* hullTypes = "the control points of B-spline surfaces (128), the\n"
                                         "ends of tabulated cylinders (122) and vertices (502)";

}
