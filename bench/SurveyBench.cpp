// A large IGES file surveyed by the example, and read by Open CASCADE into its model: the example as a whole program, by
// the clock, and of the peer just the call that reads the file. They take turns, and the fastest of each counts.
//
//     SurveyBench FOLDER [TURNS]
//
// makes FOLDER/large.igs of copies of one part, and prints for each way the milliseconds, how many megabytes that is a
// second, and the peer's time over it, above 1 if the survey is ahead.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

namespace
{

/// The lines of a part by their sections, without their ends.
struct Part
{
    std::vector<std::string> start;
    std::vector<std::string> global;
    std::vector<std::string> directory;
    std::vector<std::string> parameters;
    std::string lineEnd = "\n";
};

Part Read(const char* path)
{
    Part part;
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);)
    {
        if (line.ends_with('\r'))
        {
            line.pop_back();
            part.lineEnd = "\r\n";
        }
        const char section = line.at(72);
        if (section != 'T')
            (section == 'S'   ? part.start
             : section == 'G' ? part.global
             : section == 'D' ? part.directory
                              : part.parameters)
                .push_back(line);
    }
    return part;
}

/// In the last columns of a field.
std::string Field(std::size_t number, std::size_t width)
{
    const std::string digits = std::to_string(number);
    return std::string(width - digits.size(), ' ') + digits;
}

/// Adds to a number in columns that are counted from 0.
void Shift(std::string& line, std::size_t column, std::size_t by)
{
    line.replace(column, 8, Field(std::stoul(line.substr(column, 8)) + by, 8));
}

/// Every entity of a copy has a number and a record of its own. What a record refers to is that of the first copy.
void WriteCopies(const Part& part, std::size_t copies, const std::filesystem::path& path)
{
    std::ofstream file(path, std::ios::binary);
    for (const std::vector<std::string>* section : {&part.start, &part.global})
    {
        for (const std::string& line : *section)
            file << line << part.lineEnd;
    }
    std::size_t sequence = 0;
    for (std::size_t copy = 0; copy < copies; ++copy)
    {
        for (std::string line : part.directory)
        {
            if (sequence % 2 == 0)
                Shift(line, 8, copy * part.parameters.size());
            file << line.replace(73, 7, Field(++sequence, 7)) << part.lineEnd;
        }
    }
    sequence = 0;
    for (std::size_t copy = 0; copy < copies; ++copy)
    {
        for (std::string line : part.parameters)
        {
            Shift(line, 64, copy * part.directory.size());
            file << line.replace(73, 7, Field(++sequence, 7)) << part.lineEnd;
        }
    }
    file << 'S' << Field(part.start.size(), 7) << 'G' << Field(part.global.size(), 7) << 'D'
         << Field(copies * part.directory.size(), 7) << 'P' << Field(copies * part.parameters.size(), 7)
         << std::string(40, ' ') << "T      1" << part.lineEnd;
}

/// What a command prints.
std::string Run(const std::string& command)
{
    std::string text;
    std::FILE* const output = ::popen(command.c_str(), "r");
    for (int c = 0; output != nullptr && (c = std::fgetc(output)) != EOF;)
        text += static_cast<char>(c);
    if (output == nullptr || ::pclose(output) != 0)
    {
        std::fprintf(stderr, "SurveyBench: %s: %s\n", command.c_str(), text.c_str());
        std::exit(1);
    }
    return text;
}

double Milliseconds(const std::string& command)
{
    const auto start = std::chrono::steady_clock::now();
    Run(command);
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

struct Way
{
    const char* name;
    std::string command;
    double fastest = std::numeric_limits<double>::infinity();
};

}

int main(int argumentCount, char** arguments)
{
    constexpr std::uintmax_t atLeast = 64'000'000;
    if (argumentCount < 2)
        return 2;
    const std::filesystem::path large = std::filesystem::path(arguments[1]) / "large.igs";
    const int turns = argumentCount > 2 ? std::atoi(arguments[2]) : 30;
    const std::uintmax_t size = std::filesystem::file_size(UTILITY_PART);
    WriteCopies(Read(UTILITY_PART), (atLeast + size - 1) / size, large);
    const std::string file = " '" + large.string() + "'";
    Way peer{"Open CASCADE", UTILITY_KERNEL_READER + file};
    std::vector<Way> ways = {{"one thread", UTILITY_SURVEYING_PROGRAM " --jobs 1" + file},
                             {"two threads", UTILITY_SURVEYING_PROGRAM " --jobs 2" + file},
                             {"a thread for each processor", UTILITY_SURVEYING_PROGRAM + file}};
    for (int turn = 0; turn < turns; ++turn)
    {
        for (Way& way : ways)
            way.fastest = std::min(way.fastest, Milliseconds(way.command));
        if (turn % 5 == 0)
            peer.fastest = std::min(peer.fastest, std::stod(Run(peer.command)));
    }
    ways.push_back(peer);
    for (const Way& way : ways)
        std::printf("%s\t%.1f\t%.0f\t%.2f\n", way.name, way.fastest,
                    static_cast<double>(std::filesystem::file_size(large)) / 1e3 / way.fastest,
                    peer.fastest / way.fastest);
}
