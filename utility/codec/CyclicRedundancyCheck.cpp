#include "utility/codec/CyclicRedundancyCheck.h"

#include "utility/codec/internal/ChecksumMethods.h"

#include <cstddef>

constinit std::array<DWORD, 256> CyclicRedundancyCheck::m_vCRCTable = {};

void CyclicRedundancyCheck::Incorporate(const void* data, std::int64_t count) noexcept
{
    static const utility::detail::ChecksumMethod& method = (InitTable32(), utility::detail::FastestChecksumMethod());
    const auto* bytes = static_cast<const unsigned char*>(data);
    const auto size = static_cast<std::size_t>(count);
    if (size >= method.shortest)
    {
        m_nCRC = method.fold(m_nCRC, bytes, size);
        return;
    }
    for (std::size_t i = 0; i < size; ++i)
        m_nCRC = m_vCRCTable[m_nCRC >> 24 ^ bytes[i]] ^ m_nCRC << 8;
}

void CyclicRedundancyCheck::Incorporate32(const unsigned char* data, std::int64_t count) noexcept
{
    for (std::int64_t i = 0; i < count; ++i)
        m_nCRC = m_vCRCTable[m_nCRC >> 24 ^ data[i]] ^ m_nCRC << 8;
}

void CyclicRedundancyCheck::InitTable32() noexcept
{
    for (DWORD byte = 0; byte < m_vCRCTable.size(); ++byte)
    {
        DWORD value = byte << 24;
        for (int bit = 0; bit < 8; ++bit)
            value = utility::detail::TimesX(value);
        m_vCRCTable[byte] = value;
    }
}
