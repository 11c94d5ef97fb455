#include "utility/settings/AppSettings.h"

#include "resources/Release.h"
#include "utility/platform/AtFork.h"
#include "utility/platform/formats/Utf16.h"
#include "utility/platform/LoadOrder.h"
#include "utility/platform/Paths.h"
#include "utility/platform/Registry.h"
#include "utility/settings/internal/LibraryResources.h"
#include "utility/text/ResourceString.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <type_traits>
#include <vector>

using utility::platform::Registry;

namespace
{

constexpr unsigned int applicationTitle = 0xE000;
constexpr DWORD readAndWrite = KEY_READ | KEY_WRITE;

/// The type tag of a value. Integers of 64 bits are deliberately plain bytes: the store's own type for them is not
/// used.
template <class T>
constexpr DWORD storedType = std::is_integral_v<T> && sizeof(T) == sizeof(DWORD) ? REG_DWORD : REG_BINARY;
template <>
constexpr DWORD storedType<std::wstring> = REG_SZ;

/// A text as stored, with its terminator.
class StoredText
{
public:
    explicit StoredText(std::wstring_view text) : m_units(utility::platform::formats::Utf16FromWide(text)) {}

    const unsigned char* Data() const { return reinterpret_cast<const unsigned char*>(m_units.c_str()); }
    DWORD Size() const { return static_cast<DWORD>((m_units.size() + 1) * sizeof(char16_t)); }

private:
    std::u16string m_units;
};

/// A value of the type's own tag. Of a number that is shorter than its type the rest stays.
template <class T>
bool ReadStored(HKEY key, const wchar_t* name, T& value)
{
    if constexpr (std::is_same_v<T, std::wstring>)
    {
        return CQLMAppSettings::ReadValue(key, name, storedType<T>, value);
    }
    else
    {
        DWORD type = REG_NONE;
        DWORD size = sizeof value;
        return Registry().RegQueryValueExW(key, name, &type, &value, &size) == ERROR_SUCCESS && type == storedType<T>;
    }
}

using namespace utility::platform;

constinit StaticPlace<std::wstring> productName;

void MakeProductName() { productName.Make(); }

void DestroyProductName() { productName.Destroy(); }

[[gnu::init_priority(productNameIsMade)]] LoadStep productNameStep(productNameIsMade, &MakeProductName,
                                                                   &DestroyProductName);

/// Held while the application's settings are made, so that no fork finds another thread doing it: the child would wait
/// for that thread. What is asked meanwhile was made ahead of it.
ForkSafeMutex& Making()
{
    static UntilUnload<ForkSafeMutex> mutex;
    return *mutex;
}

[[gnu::constructor(restIsMade)]] void MakeRest()
{
    Making();
    CQLMAppSettings::CompanyKeyName();
}

}

// A slash separates the parts of a path on every system.
utility::KeyName::KeyName(const boost::filesystem::path& path) : m_joined(platform::WideFromPath(path))
{
    std::ranges::replace(m_joined, L'/', L'\\');
    m_text = m_joined.c_str();
}

struct CQLMAppSettings::Data
{
    boost::filesystem::path m_pathAppSubKey;
    resource_ptr<HKEY> m_hMachineKey;
    resource_ptr<HKEY> m_hUserKey;
};

struct CQLMAppSettings::DataMap
{
    static StaticPlace<std::map<std::wstring, std::unique_ptr<Data>>> m_mapData;
    static LoadStep step;

    static void Make()
    {
        // The store comes first, so that it outlives the open keys.
        static_cast<void>(Registry());
        m_mapData.Make();
    }
    static void Destroy() { m_mapData.Destroy(); }
};

constinit StaticPlace<std::map<std::wstring, std::unique_ptr<CQLMAppSettings::Data>>>
    CQLMAppSettings::DataMap::m_mapData;

[[gnu::init_priority(settingsMapIsMade)]] LoadStep CQLMAppSettings::DataMap::step(settingsMapIsMade, &Make, &Destroy);

CQLMAppSettings& CQLMAppSettings::instance()
{
    static constinit std::atomic<bool> isMade = false;
    // What the store's first use loads comes ahead of the lock: static objects of another library that is being loaded,
    // for whose end the system has this one wait, may be at the lock themselves.
    for (const HKEY hive : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER})
    {
        if (!isMade)
            CreateKey(hive, L"SOFTWARE", KEY_READ);
    }
    const std::lock_guard lock(Making());
    static CQLMAppSettings settings(CompanyKeyName() +
                                    (productName->empty() ? resource_string(applicationTitle) : *productName));
    isMade = true;
    return settings;
}

const std::wstring& CQLMAppSettings::CompanyKeyName()
{
    static utility::platform::UntilUnload<const std::wstring> name(std::wstring(L"SOFTWARE\\") +
                                                                   RegistryString::m_szRegistryKey + L'\\');
    return *name;
}

void CQLMAppSettings::SetProductName(const std::wstring& name) { *productName = name; }

CQLMAppSettings::CQLMAppSettings(const std::wstring& appKey) : m_data(DataOf(appKey)) {}

CQLMAppSettings::Data& CQLMAppSettings::DataOf(const std::wstring& appKey)
{
    std::unique_ptr<Data>& entry = (*DataMap::m_mapData)[appKey];
    if (entry == nullptr)
    {
        entry = std::make_unique<Data>();
        entry->m_pathAppSubKey = utility::platform::PathFromWide(appKey.c_str());
        entry->m_hMachineKey = CreateKey(HKEY_LOCAL_MACHINE, appKey.c_str(), KEY_READ);
        entry->m_hUserKey = CreateKey(HKEY_CURRENT_USER, appKey.c_str(), KEY_READ);
    }
    return *entry;
}

const boost::filesystem::path& CQLMAppSettings::AppSubKey() const { return m_data.m_pathAppSubKey; }

std::wstring CQLMAppSettings::GetAppName() const { return resource_string(applicationTitle); }

std::wstring CQLMAppSettings::GetCaptionBarString() const
{
    const std::wstring version = std::to_wstring(UTILITY_RELEASE_MAJOR);
    return GetAppName() + L' ' + version + L" " UTILITY_RELEASE_TAG " (" + version + L'.' +
           std::to_wstring(UTILITY_RELEASE_MINOR) + L'.' + std::to_wstring(UTILITY_RELEASE_BUILD) + L')';
}

resource_ptr<HKEY> CQLMAppSettings::OpenKey(HKEY parent, const utility::KeyName& subKey, DWORD access)
{
    HKEY key = nullptr;
    Registry().RegOpenKeyExW(parent, subKey.Text(), access, key);
    return resource_ptr<HKEY>(key);
}

resource_ptr<HKEY> CQLMAppSettings::CreateKey(HKEY parent, const utility::KeyName& subKey, DWORD access)
{
    HKEY key = nullptr;
    const bool created = Registry().RegCreateKeyExW(parent, subKey.Text(), access, key) == ERROR_SUCCESS;
    return resource_ptr<HKEY>(created ? key : nullptr);
}

bool CQLMAppSettings::DeleteKey(HKEY parent, const utility::KeyName& subKey)
{
    return Registry().SHDeleteKeyW(parent, subKey.Text()) == ERROR_SUCCESS;
}

bool CQLMAppSettings::CreateKey(const utility::KeyName& subKey) const
{
    return CreateKey(m_data.m_hUserKey.get(), subKey, readAndWrite) != nullptr;
}

bool CQLMAppSettings::DeleteKey(const utility::KeyName& subKey) const
{
    return DeleteKey(m_data.m_hUserKey.get(), subKey) && DeleteKey(m_data.m_hMachineKey.get(), subKey);
}

template <>
bool CQLMAppSettings::ReadValue(HKEY key, const wchar_t* name, DWORD type, std::wstring& value)
{
    DWORD foundType = REG_NONE;
    DWORD size = 0;
    if (Registry().RegQueryValueExW(key, name, &foundType, nullptr, &size) != ERROR_SUCCESS || foundType != type)
        return false;
    // A value without any bytes is deliberately there and says nothing: the caller's default stands.
    if (size == 0)
        return true;

    std::vector<char> bytes;
    LSTATUS status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA)
    {
        // It may have grown meanwhile.
        bytes.resize(size);
        status = Registry().RegQueryValueExW(key, name, &foundType, bytes.data(), &size);
    }
    if (status != ERROR_SUCCESS || foundType != type)
        return false;
    // Half a character at the end is deliberately left out.
    value = utility::platform::formats::WideFromUtf16(bytes.data(), size / sizeof(char16_t));
    value.resize(std::min(value.find(L'\0'), value.size()));
    return true;
}

template <class T>
T CQLMAppSettings::Read(const wchar_t* subKey, const wchar_t* name, const T& defaultValue, bool useUserHive) const
{
    const resource_ptr<HKEY> user = useUserHive ? OpenKey(m_data.m_hUserKey.get(), subKey, KEY_READ) : nullptr;
    const resource_ptr<HKEY> machine = OpenKey(m_data.m_hMachineKey.get(), subKey, KEY_READ);
    T value = defaultValue;
    for (const HKEY key : {user.get(), machine.get()})
    {
        // A number that is shorter than its type is deliberately taken, completed by the bytes of the default.
        if (key != nullptr && ReadStored(key, name, value))
            break;
        value = defaultValue;
    }
    return value;
}

std::wstring CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, const std::wstring& defaultValue,
                                         bool useUserHive) const
{
    return Read(subKey, name, defaultValue, useUserHive);
}

std::wstring CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, const wchar_t* defaultValue,
                                         bool useUserHive) const
{
    return Read(subKey, name, std::wstring(defaultValue), useUserHive);
}

bool CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, bool defaultValue, bool useUserHive) const
{
    return Read(subKey, name, static_cast<int>(defaultValue), useUserHive) != 0;
}

int CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, int defaultValue, bool useUserHive) const
{
    return Read(subKey, name, defaultValue, useUserHive);
}

unsigned int CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, unsigned int defaultValue,
                                         bool useUserHive) const
{
    return Read(subKey, name, defaultValue, useUserHive);
}

long CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, long defaultValue, bool useUserHive) const
{
    return Read(subKey, name, defaultValue, useUserHive);
}

unsigned long CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, unsigned long defaultValue,
                                          bool useUserHive) const
{
    return Read(subKey, name, defaultValue, useUserHive);
}

long long CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, long long defaultValue,
                                      bool useUserHive) const
{
    return Read(subKey, name, defaultValue, useUserHive);
}

unsigned long long CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name,
                                               unsigned long long defaultValue, bool useUserHive) const
{
    return Read(subKey, name, defaultValue, useUserHive);
}

float CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, float defaultValue,
                                  bool useUserHive) const
{
    return Read(subKey, name, defaultValue, useUserHive);
}

double CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, double defaultValue,
                                   bool useUserHive) const
{
    return Read(subKey, name, defaultValue, useUserHive);
}

FILETIME CQLMAppSettings::DoGetValue(const wchar_t* subKey, const wchar_t* name, const FILETIME& defaultValue,
                                     bool useUserHive) const
{
    return Read(subKey, name, defaultValue, useUserHive);
}

bool CQLMAppSettings::WriteValue(const wchar_t* subKey, const wchar_t* name, DWORD type, const unsigned char* data,
                                 DWORD size) const
{
    const resource_ptr<HKEY> key = CreateKey(m_data.m_hUserKey.get(), subKey, readAndWrite);
    return key != nullptr && Registry().RegSetValueExW(key.get(), name, type, data, size) == ERROR_SUCCESS;
}

bool CQLMAppSettings::WriteText(const wchar_t* subKey, const wchar_t* name, std::wstring_view value) const
{
    const StoredText text(value);
    return WriteValue(subKey, name, REG_SZ, text.Data(), text.Size());
}

template <class T>
bool CQLMAppSettings::WriteNumber(const wchar_t* subKey, const wchar_t* name, const T& value) const
{
    return WriteValue(subKey, name, storedType<T>, reinterpret_cast<const unsigned char*>(&value), sizeof value);
}

// An empty text and one that is null deliberately are stored without even a terminator, and so read as the default; an
// empty text given by its pointer has its terminator.
bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, const std::wstring& value) const
{
    return value.empty() ? WriteValue(subKey, name, REG_SZ, nullptr, 0) : WriteText(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, const wchar_t* value) const
{
    return value == nullptr ? WriteValue(subKey, name, REG_SZ, nullptr, 0) : WriteText(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, bool value) const
{
    return WriteNumber(subKey, name, static_cast<int>(value));
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, int value) const
{
    return WriteNumber(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, unsigned int value) const
{
    return WriteNumber(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, long value) const
{
    return WriteNumber(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, unsigned long value) const
{
    return WriteNumber(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, long long value) const
{
    return WriteNumber(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, unsigned long long value) const
{
    return WriteNumber(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, float value) const
{
    return WriteNumber(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, double value) const
{
    return WriteNumber(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, const FILETIME& value) const
{
    return WriteNumber(subKey, name, value);
}

bool CQLMAppSettings::DoSetValue(const wchar_t* subKey, const wchar_t* name, const void* data, DWORD size) const
{
    return WriteValue(subKey, name, REG_BINARY, static_cast<const unsigned char*>(data), size);
}

bool CreateRegSubKeyAndValue(HKEY key, const utility::KeyName& subKey, const std::wstring& name,
                             const std::wstring& value)
{
    HKEY created = nullptr;
    if (Registry().RegCreateKeyW(key, subKey.Text(), created) != ERROR_SUCCESS)
        return false;
    // Deliberately the value of the key and not of the subkey, and it is the key that is closed.
    const StoredText text(value);
    const bool stored = Registry().RegSetValueExW(key, name.c_str(), REG_SZ, text.Data(), text.Size()) == ERROR_SUCCESS;
    const bool closed = Registry().RegCloseKey(key) == ERROR_SUCCESS;
    return stored && closed;
}

bool CreateRegValue(HKEY key, const utility::KeyName& subKey, const std::wstring& value)
{
    return Registry().RegSetValueW(key, subKey.Text(), value.c_str()) == ERROR_SUCCESS;
}
