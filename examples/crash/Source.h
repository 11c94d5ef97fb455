#pragma once

#include "examples/crash/Report.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
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

/// The sources that are there. A report may name any file any number of times: only what is called like a source is
/// opened, on no other machine and on no device, and no more is read in all than a report that is true can need.
class Sources
{
public:
    /// How many lines are given before that of a frame, and behind it.
    explicit Sources(unsigned long distance) : m_distance(distance) {}

    /// The lines around the place of a frame, the long ones cut; nothing if the file is not there.
    const std::vector<SourceLine>& LinesAround(const Frame& frame);

private:
    std::vector<SourceLine> Read(const Frame& frame);

    unsigned long m_distance;
    std::uintmax_t m_left = 1 << 28;                                                ///< bytes
    std::map<std::pair<std::string, std::string>, std::vector<SourceLine>> m_known; ///< by path and line
};

}
