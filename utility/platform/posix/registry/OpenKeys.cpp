#include "utility/platform/posix/registry/OpenKeys.h"

namespace utility::platform::posix
{

HKEY OpenKeys::Add(const Entry& entry)
{
    if (m_free.empty())
    {
        m_free.reserve(m_slots.size() + 1);
        m_slots.push_back({});
        m_free.push_back(m_slots.size() - 1);
    }
    const std::size_t index = m_free.back();
    m_free.pop_back();
    m_slots[index].entry = entry;
    return reinterpret_cast<HKEY>(std::uintptr_t{m_slots[index].serial} << serialShift | (index + 1));
}

const OpenKeys::Entry* OpenKeys::Find(HKEY handle) const
{
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const std::size_t index = (value & 0xFFFFFFFF) - 1;
    if (index >= m_slots.size() || m_slots[index].serial != value >> serialShift ||
        m_slots[index].entry.hive == nullptr)
        return nullptr;
    return &m_slots[index].entry;
}

bool OpenKeys::Remove(HKEY handle)
{
    if (Find(handle) == nullptr)
        return false;
    const std::size_t index = (reinterpret_cast<std::uintptr_t>(handle) & 0xFFFFFFFF) - 1;
    m_slots[index].entry.hive = nullptr;
    ++m_slots[index].serial;
    m_free.push_back(index);
    return true;
}

}
