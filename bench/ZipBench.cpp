// Files packed into an archive: by the library, which brings it to the disk and puts it in its place, and by minizip
// alone, as its own program minizip does it: bytes read by stdio in blocks of 16 KB and packed at level 9.

#include "utility/codec/Zip.h"

#include <benchmark/benchmark.h>
#include <boost/filesystem/operations.hpp>

#include <cstdio>
#include <minizip/zip.h>
#include <set>
#include <string>
#include <vector>

namespace
{

using boost::filesystem::path;

const path folder = path(UTILITY_BENCH_FOLDER) / "zipped";
const path archive = folder / "a.zip";

/// So many files of moves of a machine, of this length each.
std::set<path> Files(int count, std::size_t size)
{
    boost::filesystem::remove_all(folder);
    boost::filesystem::create_directory(folder);
    std::set<path> files;
    for (int number = 0; number < count; ++number)
    {
        std::string text;
        for (int line = number * 1000; text.size() < size; ++line)
            text += "N" + std::to_string(line) + " G01 X" + std::to_string(line * 7919 % 100003) + " Y" +
                    std::to_string(line * 104729 % 99991) + "\n";
        const path file = folder / (std::to_string(number) + ".nc");
        std::FILE* const stream = std::fopen(file.c_str(), "wb");
        std::fwrite(text.data(), 1, size, stream);
        std::fclose(stream);
        files.insert(file);
    }
    return files;
}

bool ZipByMinizip(const std::set<path>& files)
{
    const zipFile zip = zipOpen64(archive.c_str(), APPEND_STATUS_CREATE);
    bool isGood = zip != nullptr;
    std::vector<char> block(16384);
    for (const path& file : files)
    {
        const zip_fileinfo information = {{0, 0, 12, 1, 0, 2026}, 0, 0, 0100644u << 16};
        isGood = isGood && zipOpenNewFileInZip4_64(zip, file.filename().c_str(), &information, nullptr, 0, nullptr, 0,
                                                   nullptr, Z_DEFLATED, 9, 0, -MAX_WBITS, DEF_MEM_LEVEL,
                                                   Z_DEFAULT_STRATEGY, nullptr, 0, 3 << 8 | 20, 1 << 11, 0) == ZIP_OK;
        std::FILE* const stream = std::fopen(file.c_str(), "rb");
        for (std::size_t size; (size = std::fread(block.data(), 1, block.size(), stream)) > 0;)
            isGood = isGood && zipWriteInFileInZip(zip, block.data(), static_cast<unsigned>(size)) == ZIP_OK;
        std::fclose(stream);
        isGood = isGood && zipCloseFileInZip(zip) == ZIP_OK;
    }
    return zipClose(zip, nullptr) == ZIP_OK && isGood;
}

template <class Zip>
void Measure(benchmark::State& state, int count, std::size_t size, Zip zip)
{
    const std::set<path> files = Files(count, size);
    for (auto _ : state)
    {
        boost::system::error_code ignored;
        boost::filesystem::remove(archive, ignored);
        if (!zip(files))
            state.SkipWithError("the archive was not written");
    }
    boost::filesystem::remove_all(folder);
}

void ByLibrary(benchmark::State& state, int count, std::size_t size)
{
    Measure(state, count, size, [](const std::set<path>& files) { return Zip::ZipFiles(archive, files); });
}

void ByMinizip(benchmark::State& state, int count, std::size_t size) { Measure(state, count, size, &ZipByMinizip); }

}

BENCHMARK_CAPTURE(ByLibrary, files, 4, 500000)->Name("Archive of four files of 500 KB/Utility");
BENCHMARK_CAPTURE(ByMinizip, files, 4, 500000)->Name("Archive of four files of 500 KB/minizip");
BENCHMARK_CAPTURE(ByLibrary, small, 200, 2000)->Name("Archive of 200 files of 2 KB/Utility");
BENCHMARK_CAPTURE(ByMinizip, small, 200, 2000)->Name("Archive of 200 files of 2 KB/minizip");
