#pragma once

#include "tests/support/BlastModel.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace support
{

/// A stream that is given in blocks of these sizes, over and over. A size of 0 says that there is no more, though the
/// next one may. Each block has memory of its own, which is gone when the next one is asked for.
class BlockSource
{
public:
    BlockSource(std::string bytes, std::vector<std::uint32_t> sizes)
        : m_bytes(std::move(bytes)), m_sizes(std::move(sizes))
    {
    }

    static std::uint32_t Give(void* context, const unsigned char** block)
    {
        return static_cast<BlockSource*>(context)->Next(*block);
    }

    /// How often a block was asked for.
    std::size_t Asked() const { return m_asked; }

private:
    std::uint32_t Next(const unsigned char*& block)
    {
        const std::size_t size = std::min<std::size_t>(m_sizes[m_asked++ % m_sizes.size()], m_bytes.size() - m_at);
        m_block = std::make_unique<unsigned char[]>(size);
        std::copy_n(m_bytes.data() + m_at, size, m_block.get());
        m_at += size;
        block = size == 0 ? nullptr : m_block.get();
        return static_cast<std::uint32_t>(size);
    }

    std::string m_bytes;
    std::vector<std::uint32_t> m_sizes;
    std::unique_ptr<unsigned char[]> m_block;
    std::size_t m_at = 0;
    std::size_t m_asked = 0;
};

/// Expands a stream by the decoder and by the model, in parts of these sizes, over and over, and beyond the first
/// failure too. What differs, as a text; empty if nothing does.
inline std::string BlastDifference(const std::string& stream, const std::vector<std::uint32_t>& blocks,
                                   const std::vector<std::uint32_t>& parts)
{
    BlockSource decoderSource(stream, blocks);
    BlockSource modelSource(stream, blocks);
    BlastModel model(BlockSource::Give, &modelSource);
    BlastState* state = nullptr;
    int code = blastInit(BlockSource::Give, &decoderSource, &state);
    const std::unique_ptr<BlastState, void (*)(BlastState*)> owner(state, blastTerm);
    if (const int expected = model.Init(); code != expected || decoderSource.Asked() != modelSource.Asked())
        return "the header gives " + std::to_string(code) + ", not " + std::to_string(expected);
    if (code != 0)
        return (state == nullptr) == (code == 2) ? "" : "there is no state, or one for nothing";

    constexpr std::size_t mostFailures = 20;
    std::size_t failures = 0;
    for (std::size_t call = 0; failures < mostFailures; ++call)
    {
        const std::uint32_t size = parts[call % parts.size()];
        std::string part(size, '?');
        std::string expectedPart = part;
        std::uint64_t stored = SIZE_MAX;
        std::uint64_t expectedStored = SIZE_MAX;
        code = blastMore(state, part.data(), size, &stored);
        const int expected = model.More(expectedPart.data(), size, expectedStored);
        const std::string place = "call " + std::to_string(call) + " for " + std::to_string(size) + " bytes: ";
        if (code != expected)
            return place + "code " + std::to_string(code) + ", not " + std::to_string(expected);
        if (stored != expectedStored)
            return place + std::to_string(stored) + " bytes, not " + std::to_string(expectedStored);
        if (part.compare(0, stored, expectedPart, 0, stored) != 0)
            return place + "other bytes";
        if (decoderSource.Asked() != modelSource.Asked())
            return place + std::to_string(decoderSource.Asked()) + " blocks, not " +
                   std::to_string(modelSource.Asked());
        std::uint64_t whole = 0;
        std::uint64_t expectedWhole = 0;
        if (blastEndMarkRead(state, &whole) != model.EndMarkRead(expectedWhole) || whole != expectedWhole)
            return place + "another end";
        if (code != 0 || stored == 0)
            ++failures;
    }
    return {};
}

}
