#include "utility/platform/posix/registry/Remembered.h"

#include "utility/platform/posix/registry/HiveFile.h"
#include "utility/platform/posix/registry/NameFold.h"

#include <algorithm>
#include <atomic>
#include <sqlite3.h>
#include <utility>

namespace utility::platform::posix
{

namespace
{

// Remembering stops at this many names, and takes no larger value.
constexpr std::size_t mostRemembered = 4096;
constexpr std::size_t largestRemembered = 4096;

}

void Remembered::Follow(sqlite3* database)
{
    sqlite3_file* const file = FileOf(database);
    void volatile* index = nullptr;
    constexpr int regionSize = 32768;
    const int result = file->pMethods->xShmMap(file, 0, regionSize, 0, &index);
    if (result == SQLITE_OK || result == SQLITE_READONLY)
        m_sharedHeader = static_cast<std::uint64_t*>(const_cast<void*>(index));
}

void Remembered::Clear()
{
    m_sharedHeader = nullptr;
    Forget();
}

const std::int64_t* Remembered::FindKey(std::int64_t parent, std::wstring_view path)
{
    Want(parent, path);
    const auto found = m_keys.find(m_wanted);
    return found != m_keys.end() ? &found->second : nullptr;
}

const Remembered::Value* Remembered::FindValue(std::int64_t key, std::wstring_view name)
{
    Want(key, name);
    const auto found = m_values.find(m_wanted);
    return found != m_values.end() ? &found->second : nullptr;
}

Remembered::Place Remembered::PlaceUpTo(Names names, std::int64_t key, DWORD index)
{
    ForgetWhatMayHaveChanged();
    const auto& places = m_places[static_cast<std::size_t>(names)];
    const auto found = places.find(key);
    return found != places.end() && found->second.index <= index ? found->second : Place();
}

void Remembered::KeepPlace(Names names, std::int64_t key, Place place)
{
    m_places[static_cast<std::size_t>(names)][key] = std::move(place);
}

void Remembered::KeepKey(std::int64_t key)
{
    if (IsUnchanged())
        m_keys.emplace(m_wanted, key);
}

void Remembered::KeepValue(LSTATUS status, DWORD type, std::string_view data)
{
    if (data.size() <= largestRemembered && IsUnchanged())
        m_values[m_wanted] = {status, type, std::string(data)};
}

void Remembered::Forget()
{
    m_keys.clear();
    m_values.clear();
    for (auto& each : m_places)
        each.clear();
}

void Remembered::ForgetWhatMayHaveChanged()
{
    Header now = {};
    if (!ReadHeader(now) || now != m_header || m_keys.size() >= mostRemembered || m_values.size() >= mostRemembered ||
        std::ranges::any_of(m_places, [](const auto& each) { return each.size() >= mostRemembered; }))
    {
        m_header = now;
        Forget();
    }
}

void Remembered::Want(std::int64_t key, std::wstring_view name)
{
    ForgetWhatMayHaveChanged();
    m_wanted.assign(reinterpret_cast<const char*>(&key), sizeof(key));
    AppendFolded(m_wanted, name);
}

bool Remembered::ReadHeader(Header& header) const
{
    if (m_sharedHeader == nullptr)
        return false;
    for (std::size_t i = 0; i < header.size(); ++i)
        header[i] = std::atomic_ref(m_sharedHeader[i]).load(std::memory_order_acquire);
    return true;
}

bool Remembered::IsUnchanged() const
{
    Header now = {};
    return ReadHeader(now) && now == m_header;
}

}
