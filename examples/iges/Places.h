#pragma once

// Where the copies of something are: of a subfigure (408), or of an entity in a rectangular (412) or circular (414)
// array, which may have a thousand million.
//
//     Places places;
//     if (places.Read(numbers) == nullptr)
//         for (const Point& place : places.Outermost())
//             Measure(places.Base(), place);

#include "examples/iges/Shape.h"

#include <cstdint>
#include <functional>
#include <set>

namespace iges
{

class Places
{
public:
    static bool AreThoseOf(int type) { return type == 408 || type == 412 || type == 414; }

    /// What is wrong with the numbers, null if nothing is.
    const wchar_t* Read(const Numbers& numbers);

    /// The directory entry of what is copied.
    int Base() const { return m_base; }

    /// What is the same for all copies: their scale, the place of an array, and the turn of a rectangular one as a
    /// whole. A circular one turns none of its copies. The place of a subfigure is not in its own space, but in that
    /// which it is moved to, and so is no part of this.
    const Transform& Common() const { return m_common; }

    /// Hands on by how much each copy is moved, until that gives false.
    void ForEach(const std::function<bool(const Point&)>& action) const;

    /// Those that alone make the extents of all, or a few that enclose them.
    std::vector<Point> Outermost() const;

private:
    const wchar_t* ReadScale(const Numbers& numbers, std::size_t scale, std::size_t place);
    const wchar_t* ReadList(const Numbers& numbers, std::size_t count);
    bool IsShown(std::uint64_t number) const;
    Point At(std::uint64_t number) const;
    void AddCorner(bool isRight, bool isTop, std::vector<Point>& places) const;

    int m_base = 0;
    Transform m_common;
    bool m_isCircular = false;
    std::uint64_t m_columns = 1; ///< the places themselves, if they are around a circle
    std::uint64_t m_rows = 1;
    Point m_column = {}; ///< from one to the next
    Point m_row = {};
    double m_radius = 0.0;
    double m_start = 0.0; ///< angle of the first
    double m_step = 0.0;
    bool m_onlyListed = false;
    std::set<std::uint64_t> m_listed; ///< places from 1, up the first column first
};

}
