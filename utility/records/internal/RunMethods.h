#pragma once

// The ways to read a run of numbers out of a piece of text that are faster than one read after the other, with the same
// results. A field that a way does not take is left to such a read: one of too many characters, with blanks behind its
// number, and whatever is wrong.

#include "utility/platform/ProcessorMethods.h"
#include "utility/records/TextRecordPtr.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace utility::detail
{

/// A piece of a record's text, without the ends of its lines. What stands around the text may be read, and counts for
/// nothing.
struct RunText
{
    static constexpr std::size_t capacity = 2048;
    static constexpr std::size_t margin = 64;

    char before[margin];
    char text[capacity + margin];
};

/// The fields that end within a piece of text, each of which begins behind the end of the one ahead of it.
struct RunFields
{
    std::size_t count = 0;
    /// Whether the last of them ends in something else than the separator.
    bool endsRun = false;
    /// By the number of the field, from 1. In front of them the start of the first one less 1.
    std::array<std::uint16_t, RunText::capacity + 16> ends; // may be filled some further than they go

    std::size_t Begin(std::size_t index) const { return static_cast<std::uint16_t>(ends[index] + 1); }
    std::size_t End(std::size_t index) const { return ends[index + 1]; }
    void Clear()
    {
        count = 0;
        endsRun = false;
        ends[0] = 0xFFFF;
    }
    void Add(std::size_t end) { ends[++count] = static_cast<std::uint16_t>(end); }
};

/// What ends a field. The first one is the separator.
struct RunEnds
{
    static constexpr std::size_t most = 8;

    std::array<char, most> characters{};
    std::size_t count = 0;
};

struct RunMethod : platform::ProcessorMethod
{
    /// Finds the ends among the first `size` characters, as far as the first that is no separator.
    void (*find)(const RunText& text, std::size_t size, const RunEnds& ends, RunFields& fields);
    /// Reads fields, from this index on, up to the first that it leaves alone, and gives how many. There are as many
    /// values, and forms if they are not null.
    std::size_t (*readReals)(const RunText& text, const RunFields& fields, std::size_t first, std::size_t most,
                             double* values, TextFieldForm* forms);
    std::size_t (*readInts)(const RunText& text, const RunFields& fields, std::size_t first, std::size_t most,
                            int* values);
};

/// The last one reads nothing.
extern platform::ProcessorMethods<RunMethod> runMethods;

}
