#pragma once

// A series of doubles: how many, the smallest, the largest, the sum and, if wanted, each of them.
//
//     StatSeries widths;
//     for (double width : measured)
//         widths.AddValNotArray(width);
//     if (widths.count != 0)
//         Show(widths.minimum, widths.maximum, widths.sum / widths.count);
//
// A series belongs to one thread at a time. The fields are for reading. AddValNotArray throws nothing; to make, copy or
// move a series and AddVal may throw std::bad_alloc, AddVal when the value is counted already.

#include <cstdint>
#include <deque>
#include <utility>

struct StatSeries
{
    std::uint32_t count;       ///< of the values added, by either operation
    double minimum;            ///< without meaning while there are none
    double maximum;            ///< likewise
    double sum;                ///< in the order in which they came
    std::deque<double> values; ///< those added with AddVal, the oldest first

    // The smallest and the largest are deliberately left unset: the first value sets both.
    StatSeries() : count(0), sum(0.0) {}
    StatSeries(const StatSeries&) = default;
    /// Leaves the other's values empty and its other fields as they are: it is not to be read any more.
    StatSeries(StatSeries&&) = default;
    StatSeries& operator=(const StatSeries&) = default;
    StatSeries& operator=(StatSeries&&) = default;
    ~StatSeries() = default;

    /// Adds a value and keeps it.
    void AddVal(double value)
    {
        AddValNotArray(value);
        values.push_back(value);
    }

    /// Adds a value without keeping it.
    void AddValNotArray(double value) noexcept
    {
        if (count == 0)
            minimum = maximum = value;
        // Deliberately in this sense: a NaN becomes the minimum, and the next value replaces it.
        else if (!(value >= minimum))
            minimum = value;
        else if (value > maximum)
        {
            maximum = value;
            asm(""); // keeps the branch: a maximum computed without one makes each value wait for the one before
        }
        ++count;
        sum = value + sum;
    }
};
