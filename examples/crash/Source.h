#pragma once

#include "examples/crash/Report.h"

#include <string>
#include <vector>

namespace crash
{

struct SourceLine
{
    unsigned long number;
    std::string text;
    bool isWhere; ///< the frame was there

    bool operator==(const SourceLine&) const = default;
};

/// The lines around the place of a frame, or nothing if the file is not there. A report may name any file: only those
/// that are called like sources are opened.
std::vector<SourceLine> LinesAround(const Frame& frame, unsigned long distance);

}
