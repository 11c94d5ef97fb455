// Imploded streams expanded, through the callback, beside inflate of the same originals and a decoder that goes bit by
// bit. The streams are of text and numbers as this application has them, made here and imploded with coded and with raw
// literals, and with UTILITY_TEST_DATA the larger real ones. One of random bytes stands apart: nothing repeats in it.

#include "tests/support/BlastModel.h"
#include "tests/support/Implode.h"

#include <benchmark/benchmark.h>
#include <boost/filesystem/operations.hpp>
#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace
{

constexpr std::size_t originalSize = 1'000'000;

/// A stream, given as a reader of a file would.
class Blocks
{
public:
    explicit Blocks(std::string_view bytes) : m_left(bytes) {}

    static std::uint32_t Give(void* context, const unsigned char** block)
    {
        std::string_view& left = static_cast<Blocks*>(context)->m_left;
        const std::string_view given = left.substr(0, blockSize);
        left.remove_prefix(given.size());
        *block = reinterpret_cast<const unsigned char*>(given.data());
        return static_cast<std::uint32_t>(given.size());
    }

private:
    static constexpr std::size_t blockSize = 65536;

    std::string_view m_left;
};

struct Stream
{
    std::string imploded;
    std::string deflated;
    std::string original;
};

// What expands a stream to `bytes`, which are as long as its original.

struct Utility
{
    static void Expand(const Stream& stream, std::string& bytes)
    {
        Blocks blocks(stream.imploded);
        BlastState* state = nullptr;
        std::uint64_t size = 0;
        blastInit(&Blocks::Give, &blocks, &state);
        blastMore(state, bytes.data(), bytes.size(), &size);
        blastTerm(state);
    }
};

struct BitByBit
{
    static void Expand(const Stream& stream, std::string& bytes)
    {
        Blocks blocks(stream.imploded);
        support::BlastModel model(&Blocks::Give, &blocks);
        std::uint64_t size = 0;
        model.Init();
        model.More(bytes.data(), bytes.size(), size);
    }
};

struct Inflate
{
    static void Expand(const Stream& stream, std::string& bytes)
    {
        uLongf size = bytes.size();
        uncompress(reinterpret_cast<Bytef*>(bytes.data()), &size,
                   reinterpret_cast<const Bytef*>(stream.deflated.data()), stream.deflated.size());
    }
};

struct Libdeflate
{
    static void Expand(const Stream& stream, std::string& bytes)
    {
        static libdeflate_decompressor* const decompressor = libdeflate_alloc_decompressor();
        std::size_t size = 0;
        libdeflate_zlib_decompress(decompressor, stream.deflated.data(), stream.deflated.size(), bytes.data(),
                                   bytes.size(), &size);
    }
};

template <class Decoder>
void Expand(benchmark::State& state, const Stream& stream)
{
    std::string bytes(stream.original.size(), '\0');
    for (auto _ : state)
    {
        Decoder::Expand(stream, bytes);
        benchmark::ClobberMemory();
    }
    if (bytes != stream.original)
        state.SkipWithError("other bytes");
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}

void Add(const std::string& name, std::string imploded, std::string original)
{
    auto stream = std::make_shared<Stream>();
    stream->imploded = std::move(imploded);
    stream->original = std::move(original);
    uLongf size = compressBound(stream->original.size());
    stream->deflated.resize(size);
    compress2(reinterpret_cast<Bytef*>(stream->deflated.data()), &size,
              reinterpret_cast<const Bytef*>(stream->original.data()), stream->original.size(), 6);
    stream->deflated.resize(size);
    const auto add = [&](const char* who, void (*expand)(benchmark::State&, const Stream&))
    {
        benchmark::RegisterBenchmark(("expand, " + name + '/' + who).c_str(),
                                     [expand, stream](benchmark::State& state) { expand(state, *stream); });
    };
    add("Utility", &Expand<Utility>);
    add("inflate", &Expand<Inflate>);
    add("libdeflate", &Expand<Libdeflate>);
    add("bit by bit", &Expand<BitByBit>);
}

void AddImploded(const std::string& name, const std::string& original)
{
    Add(name + ", coded literals", support::Implode(original, true, 6), original);
    Add(name + ", raw literals", support::Implode(original, false, 6), original);
}

/// Moves along a curve, as a machine is told.
std::string Moves()
{
    std::string text;
    for (int number = 0; text.size() < originalSize; ++number)
    {
        char line[100];
        std::snprintf(line, sizeof(line), "N%d G01 X%.3f Y%.3f Z%.3f F%d\n", number * 10, 80 * std::cos(number * 0.01),
                      60 * std::sin(number * 0.013), -0.002 * number, 800 + number % 7 * 50);
        text += line;
    }
    return text;
}

/// Messages that are made of a few hundred words.
std::string Sentences()
{
    std::mt19937 random(1);
    std::vector<std::string> words;
    for (int i = 0; i < 400; ++i)
    {
        std::string word;
        for (unsigned int letters = 2 + random() % 8; letters != 0; --letters)
            word += "etaoinshrdlucmfwypvbgk"[std::min(random() % 22, random() % 22)];
        words.push_back(word);
    }
    std::string text;
    while (text.size() < originalSize)
        text += words[std::min(random() % words.size(), random() % words.size())] + (random() % 12 == 0 ? ".\n" : " ");
    return text;
}

/// Triangles of a surface: three corners of three floats each, neighbours of the ones before.
std::string Triangles()
{
    std::string bytes;
    const auto put = [&bytes](int u, int v)
    {
        const float corner[] = {static_cast<float>(u) * 0.5F, static_cast<float>(v) * 0.5F,
                                std::round(std::sin(static_cast<float>(u * v) * 0.01F) * 64) / 64};
        bytes.append(reinterpret_cast<const char*>(corner), sizeof(corner));
    };
    for (int v = 0; bytes.size() < originalSize; ++v)
    {
        for (int u = 0; u < 60; ++u)
        {
            put(u, v);
            put(u + 1, v);
            put(u, v + 1);
        }
    }
    return bytes;
}

std::string Noise()
{
    std::mt19937 random(2);
    std::string bytes(originalSize, '\0');
    std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
    return bytes;
}

void AddFile(const boost::filesystem::path& folder, const std::string& name, const std::string& original)
{
    const auto read = [&](const std::string& file)
    {
        std::ifstream stream((folder / file).string(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    };
    if (exists(folder / name))
        Add(name, read(name), read(original));
}

const bool areAdded = []
{
    AddImploded("moves", Moves());
    AddImploded("sentences", Sentences());
    AddImploded("triangles", Triangles());
    AddImploded("noise", Noise());
    const boost::filesystem::path folder = boost::filesystem::path(UTILITY_TEST_DATA) / "dcl";
    AddFile(folder, "iges_like.txt.asc.4096.imp", "iges_like.txt");
    AddFile(folder, "iges_like.txt.raw.4096.imp", "iges_like.txt");
    AddFile(folder, "all_bytes_ramp.bin.asc.1024.imp", "all_bytes_ramp.bin");
    AddFile(folder, "pklib-rs-large.imploded.ascii", "pklib-rs-large.decomp");
    AddFile(folder, "pklib-rs-large.imploded", "pklib-rs-large.decomp");
    return true;
}();

}
