#pragma once

// What an executable says of itself.

#include "utility/Utility.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace executables
{

struct Section
{
    std::string name;
    std::uint64_t size = 0; ///< in memory, where that is known

    bool operator==(const Section&) const = default;
};

/// What is unknown, or has no place in this kind of file, is empty.
struct Executable
{
    std::string kind;
    std::string machine;
    std::string built; ///< when, in UTC
    std::string buildId;
    std::string interpreter; ///< the program that starts this one
    std::vector<Section> sections;
    std::vector<std::string> needed; ///< libraries, at most so many
    std::vector<std::string> faults; ///< what the file has not whole

    static constexpr std::size_t mostNeeded = 1000;
};

/// By the headers of a file, which is none of a known kind if this is nothing. Nothing outside the bytes is read, and
/// the work is bounded by their number.
std::optional<Executable> Examine(const CPEExeFile& file);

Executable ExaminePe(const CPEExeFile& file);
bool IsElf(std::string_view bytes);
Executable ExamineElf(std::string_view bytes);

/// A text of a file, which may hold what a terminal takes for a command.
std::string Shown(const std::string& text);

/// As "0x8664", with at least so many digits.
std::string Hex(std::uint64_t number, int digits);

/// The names that the two formats have numbers for; the number itself where it has none.
std::string PeMachine(std::uint64_t machine);
std::string ElfMachine(std::uint64_t machine);

}
