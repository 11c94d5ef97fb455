// The text of a scene in pieces of 100 characters, compressed and plain, and numbers in decimal, written to a file as
// they come. The clock stops before the close, which brings the file to the disk. gzwrite gathers 8 KB before it
// compresses; the others hand on each piece, with one call of the system for each where nothing is compressed. The
// peers are told the length of a piece, which the library finds out.

#include "bench/AllocationCount.h"
#include "utility/codec/VRMLFile.h"
#include "utility/files/TextFile.h"

#include <benchmark/benchmark.h>
#include <boost/filesystem/operations.hpp>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>
#include <zlib.h>

namespace
{

const std::string path = UTILITY_BENCH_FOLDER "/written";
constexpr std::size_t pieceSize = 100;

/// A scene of 1 MB, the points of a spiral and the indices of the lines between them, in pieces.
const std::vector<std::string>& Pieces()
{
    static const std::vector<std::string> pieces = []
    {
        std::string text = "#VRML V2.0 utf8\nShape { geometry IndexedLineSet { coord Coordinate { point [\n";
        for (int number = 0; text.size() < 700'000; ++number)
        {
            const double radius = 20 + number * 0.01;
            char point[100];
            std::snprintf(point, sizeof(point), "%.4f %.4f %.4f,\n", radius * std::cos(number * 0.05),
                          radius * std::sin(number * 0.05), number * 0.0125);
            text += point;
        }
        text += "] } coordIndex [\n";
        for (int number = 0; text.size() < 1'000'000; ++number)
            text += std::to_string(number) + ' ' + std::to_string(number + 1) + " -1,\n";
        std::vector<std::string> made;
        for (std::size_t at = 0; at + pieceSize <= text.size(); at += pieceSize)
            made.push_back(text.substr(at, pieceSize));
        return made;
    }();
    return pieces;
}

std::string Expanded()
{
    const gzFile file = gzopen(path.c_str(), "rb");
    std::string text;
    char part[65536];
    for (int size = 0; (size = gzread(file, part, sizeof(part))) > 0;)
        text.append(part, static_cast<std::size_t>(size));
    gzclose(file);
    return text;
}

bool HoldsPieces(const std::string& text, std::size_t count)
{
    if (text.size() != count * pieceSize)
        return false;
    for (std::size_t number = 0; number < count; ++number)
    {
        if (text.compare(number * pieceSize, pieceSize, Pieces()[number % Pieces().size()]) != 0)
            return false;
    }
    return true;
}

// What writes pieces, and gives the text of the closed file.

template <int level>
class Utility
{
public:
    static constexpr bool mayAllocate = false;

    Utility() { m_file.Open(boost::filesystem::path(path), true, level); }
    void Write(const std::string& piece) { m_file << piece.c_str(); }
    std::string Close()
    {
        m_file.Close();
        return Expanded();
    }

private:
    CVRMLFile m_file;
};

template <int level>
class GzWrite
{
public:
    static constexpr bool mayAllocate = true;

    GzWrite() : m_file(gzopen(path.c_str(), ("wb" + std::to_string(level)).c_str())) {}
    void Write(const std::string& piece) { gzwrite(m_file, piece.data(), pieceSize); }
    std::string Close()
    {
        gzclose(m_file);
        return Expanded();
    }

private:
    gzFile m_file;
};

std::string ReadBack()
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class UtilityPlain
{
public:
    static constexpr bool mayAllocate = false;

    UtilityPlain() { m_file.Open(boost::filesystem::path(path), false, 0); }
    void Write(const std::string& piece) { m_file << piece.c_str(); }
    std::string Close()
    {
        m_file.Close();
        std::string text = ReadBack();
        text.resize(text.size() - 8);
        return text;
    }

private:
    CVRMLFile m_file;
};

/// A file of the system's, open to write.
class Descriptor
{
public:
    Descriptor() : m_descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { ::close(m_descriptor); }

    int operator*() const { return m_descriptor; }

private:
    int m_descriptor;
};

class SystemWrite
{
public:
    static constexpr bool mayAllocate = true;

    void Write(const std::string& piece) { benchmark::DoNotOptimize(::write(*m_file, piece.data(), pieceSize)); }
    std::string Close() { return ReadBack(); }

private:
    Descriptor m_file;
};

template <class Writer>
void WritePieces(benchmark::State& state)
{
    const std::vector<std::string>& pieces = Pieces();
    boost::filesystem::remove(path);
    Writer file;
    std::size_t count = 0;
    const std::uint64_t before = AllocationCount();
    for (auto _ : state)
        file.Write(pieces[count++ % pieces.size()]);
    if (!Writer::mayAllocate && AllocationCount() != before)
        state.SkipWithError("a piece allocates");
    if (!HoldsPieces(file.Close(), count))
        state.SkipWithError("another text");
}

// Numbers, each behind the other.

class UtilityText
{
public:
    static constexpr bool mayAllocate = false;

    UtilityText() { m_file.Open(boost::filesystem::path(path)); }
    void Write(int number) { m_file << number; }
    void Close() { m_file.Close(0); }

private:
    CTextFile m_file;
};

class ToCharsAndWrite
{
public:
    static constexpr bool mayAllocate = true;

    void Write(int number)
    {
        char digits[12];
        const char* const end = std::to_chars(digits, std::end(digits), number).ptr;
        benchmark::DoNotOptimize(::write(*m_file, digits, static_cast<std::size_t>(end - digits)));
    }
    void Close() {}

private:
    Descriptor m_file;
};

class Printf
{
public:
    static constexpr bool mayAllocate = true;

    void Write(int number) { ::dprintf(*m_file, "%d", number); }
    void Close() {}

private:
    Descriptor m_file;
};

template <class Writer>
void WriteNumbers(benchmark::State& state)
{
    constexpr int first = -5'000'000;
    constexpr std::size_t digits = 8;
    boost::filesystem::remove(path);
    Writer file;
    int number = first;
    const std::uint64_t before = AllocationCount();
    for (auto _ : state)
        file.Write(number++);
    if (!Writer::mayAllocate && AllocationCount() != before)
        state.SkipWithError("a number allocates");
    file.Close();
    const std::string text = ReadBack();
    bool isGood = true;
    for (int each = first; each != number && each < -1'000'000; ++each)
        isGood =
            isGood && text.compare(static_cast<std::size_t>(each - first) * digits, digits, std::to_string(each)) == 0;
    if (!isGood)
        state.SkipWithError("other numbers");
}

BENCHMARK(WritePieces<Utility<1>>)->Name("scene compressed, level 1/Utility");
BENCHMARK(WritePieces<GzWrite<1>>)->Name("scene compressed, level 1/gzwrite");
BENCHMARK(WritePieces<Utility<6>>)->Name("scene compressed, level 6/Utility");
BENCHMARK(WritePieces<GzWrite<6>>)->Name("scene compressed, level 6/gzwrite");
BENCHMARK(WritePieces<Utility<9>>)->Name("scene compressed, level 9/Utility");
BENCHMARK(WritePieces<GzWrite<9>>)->Name("scene compressed, level 9/gzwrite");
BENCHMARK(WritePieces<UtilityPlain>)->Name("scene plain/Utility");
BENCHMARK(WritePieces<SystemWrite>)->Name("scene plain/write");

BENCHMARK(WriteNumbers<UtilityText>)->Name("number to a file/Utility");
BENCHMARK(WriteNumbers<ToCharsAndWrite>)->Name("number to a file/to_chars, write");
BENCHMARK(WriteNumbers<Printf>)->Name("number to a file/dprintf");

}
