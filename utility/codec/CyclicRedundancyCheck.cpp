#include "utility/codec/CyclicRedundancyCheck.h"

#include "utility/codec/internal/ChecksumMethods.h"

#include <cstddef>

constinit std::array<DWORD, 256> CyclicRedundancyCheck::m_vCRCTable = {};

DWORD CyclicRedundancyCheck::Fold(DWORD value, const void* data, std::int64_t count) noexcept
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    const auto size = static_cast<std::size_t>(count);
    if (size >= utility::detail::checksumBlock)
        return utility::detail::checksumMethods.Used().fold(value, bytes, size);
    InitTable32();
    for (std::size_t i = 0; i < size; ++i)
        value = m_vCRCTable[value >> 24 ^ bytes[i]] ^ value << 8;
    return value;
}

void CyclicRedundancyCheck::Incorporate32(const unsigned char* data, std::int64_t count) noexcept
{
    InitTable32();
    for (std::int64_t i = 0; i < count; ++i)
        m_nCRC = m_vCRCTable[m_nCRC >> 24 ^ data[i]] ^ m_nCRC << 8;
}

void CyclicRedundancyCheck::InitTable32() noexcept
{
    static const bool isFilled = []
    {
        for (DWORD byte = 0; byte < m_vCRCTable.size(); ++byte)
        {
            DWORD value = byte << 24;
            for (int bit = 0; bit < 8; ++bit)
                value = utility::detail::TimesX(value);
            m_vCRCTable[byte] = value;
        }
        return true;
    }();
    static_cast<void>(isFilled);
}
