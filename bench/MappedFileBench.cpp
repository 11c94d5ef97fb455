// A text file of 200 MB, opened, all its lines counted, and closed. The system holds it in memory, so that no disk is
// measured. All but std::getline, which finds the lines itself, count with the same function.

#include "bench/LineCount.h"
#include "utility/files/MemoryMappedFile.h"

#include <benchmark/benchmark.h>
#include <boost/filesystem/operations.hpp>
#include <boost/iostreams/device/mapped_file.hpp>

#include <array>
#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace
{

constexpr std::int64_t lineCount = 2'500'000;

std::int64_t LinesByBlocks(const std::string& path)
{
    // At a page's start: to 16 bytes behind one, where malloc puts large blocks, some processors copy five times
    // slower.
    alignas(4096) static std::array<char, 1 << 20> block;
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::int64_t lines = 0;
    ssize_t size = 0;
    while ((size = ::read(file, block.data(), block.size())) > 0)
        lines += CountLineFeeds(block.data(), block.data() + size);
    ::close(file);
    return lines;
}

/// Has the system hold the file as it does once someone read it from the disk. In the many small pieces that the
/// writing of a file leaves behind, each page costs a mapping three times as much, and the machine's history would be
/// measured.
void ReadFromDisk(const std::string& path)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ::fsync(file);
    ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    ::close(file);
    LinesByBlocks(path);
}

/// The file, which is made if it is not there. Its lines have 80 columns on average.
const std::string& TextFile()
{
    static const std::string path = []
    {
        std::string name = UTILITY_BENCH_FOLDER "/lines.txt";
        const std::string columns =
            "     110,12.5,-0.125,1.25E+02,0.0,0.0,1.0,    77P     39  3H0.1,14HBASE_PLATE.PRT,4.0,1,2HMM,32768,";
        const auto line = [&columns](std::int64_t number)
        { return std::string_view(columns).substr(static_cast<std::size_t>(number * 17 % 41)); };
        std::uint64_t size = 0;
        for (std::int64_t number = 0; number < lineCount; ++number)
            size += line(number).size() + 1;
        boost::system::error_code error;
        if (boost::filesystem::file_size(name, error) != size)
        {
            std::ofstream file(name, std::ios::binary);
            for (std::int64_t number = 0; number < lineCount; ++number)
                file << line(number) << '\n';
        }
        ReadFromDisk(name);
        return name;
    }();
    return path;
}

std::int64_t LinesByUtility(const std::string& path)
{
    const CMemoryMappedFile file{boost::filesystem::path(path)};
    const auto* const text = static_cast<const char*>(file.GetBase());
    return CountLineFeeds(text, text + file.GetFileSize());
}

std::int64_t LinesByBoost(const std::string& path)
{
    const boost::iostreams::mapped_file_source file(path);
    return CountLineFeeds(file.begin(), file.end());
}

std::int64_t LinesByGetline(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::int64_t lines = 0;
    for (std::string line; std::getline(file, line);)
        ++lines;
    return lines;
}

template <auto Count>
void CountLines(benchmark::State& state)
{
    const std::string& path = TextFile();
    for (auto _ : state)
    {
        if (Count(path) != lineCount)
            return state.SkipWithError("another number of lines");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(boost::filesystem::file_size(path)));
}

BENCHMARK(CountLines<LinesByUtility>)->Name("lines of a file/Utility");
BENCHMARK(CountLines<LinesByBoost>)->Name("lines of a file/Boost mapped_file_source");
BENCHMARK(CountLines<LinesByBlocks>)->Name("lines of a file/read 1 MiB");
BENCHMARK(CountLines<LinesByGetline>)->Name("lines of a file/getline");

}
