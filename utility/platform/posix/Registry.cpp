#include "utility/platform/Registry.h"

#include "utility/platform/AtFork.h"
#include "utility/platform/formats/Utf16.h"
#include "utility/platform/Hives.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/registry/Hive.h"
#include "utility/platform/posix/registry/OpenKeys.h"
#include "utility/platform/posix/registry/Sqlite.h"
#include "utility/platform/posix/registry/Status.h"
#include "utility/platform/UntilUnload.h"

#include <algorithm>
#include <boost/filesystem/operations.hpp>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>

namespace utility::platform
{

namespace
{

using boost::filesystem::path;
using posix::Hive;
using posix::Status;
using posix::success;

constexpr LSTATUS tooSmall = Status(ERROR_MORE_DATA);

// What an operation asks of the key that it is given.
constexpr DWORD queryValues = 0x1;
constexpr DWORD setValues = 0x2;
constexpr DWORD enumerateSubKeys = 0x8;
constexpr DWORD nothing = 0;

std::wstring_view Text(const wchar_t* text) { return text != nullptr ? std::wstring_view(text) : std::wstring_view(); }

LSTATUS GiveName(const std::wstring& name, wchar_t* buffer, DWORD& length)
{
    if (name.size() >= length)
        return tooSmall;
    std::copy_n(name.c_str(), name.size() + 1, buffer);
    length = static_cast<DWORD>(name.size());
    return success;
}

LSTATUS GiveValue(const Hive::Value& value, DWORD* type, void* data, DWORD* size)
{
    if (type != nullptr)
        *type = value.type;
    const auto needed = static_cast<DWORD>(value.data.size());
    const DWORD room = size != nullptr ? *size : 0;
    if (size != nullptr)
        *size = needed;
    if (data == nullptr)
        return success;
    if (room < needed)
        return tooSmall;
    value.data.copy(static_cast<char*>(data), needed);
    return success;
}

class PosixRegistry final : public RegistryService, HeldAtFork
{
public:
    /// At the end of the process it lets go of what it has open, so that no log of a database is left, and stays.
    static PosixRegistry& The()
    {
        static UntilUnload<PosixRegistry> registry;
        static const std::unique_ptr<PosixRegistry, void (*)(PosixRegistry*)> closing(
            &*registry, [](PosixRegistry* each) { each->Rest(); });
        return *registry;
    }

    PosixRegistry()
        : m_user(std::make_unique<Hive>(posix::UsualHiveFile(posix::HiveOwner::user), posix::HiveOwner::user)),
          m_machine(std::make_unique<Hive>(posix::UsualHiveFile(posix::HiveOwner::machine), posix::HiveOwner::machine))
    {
    }

    PosixRegistry(const PosixRegistry&) = delete;
    PosixRegistry& operator=(const PosixRegistry&) = delete;

    ~PosixRegistry() override
    {
        m_user.reset();
        m_machine.reset();
        posix::UnloadSqlite();
    }

    bool SetFile(HKEY root, const path& file)
    {
        const std::lock_guard lock(m_mutex);
        std::unique_ptr<Hive>* const hive = HiveOf(root);
        if (hive == nullptr)
            return false;
        *hive = std::make_unique<Hive>(file, (*hive)->Whose(), (*hive)->Generation() + 1);
        return true;
    }

    path FileOf(HKEY root)
    {
        const std::lock_guard lock(m_mutex);
        const std::unique_ptr<Hive>* const hive = HiveOf(root);
        return hive != nullptr ? (*hive)->File() : path();
    }

    LSTATUS RegCreateKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        return OpenKey(parent, access, key,
                       [&](Hive& hive, Hive::Key id, Hive::Key& found)
                       { return hive.FindOrCreate(id, Text(subKey), found); });
    }

    LSTATUS RegOpenKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        const auto purpose = IsToWrite(access) ? Hive::Purpose::writing : Hive::Purpose::reading;
        return OpenKey(parent, access, key,
                       [&](Hive& hive, Hive::Key id, Hive::Key& found)
                       { return hive.Find(id, Text(subKey), found, purpose); });
    }

    LSTATUS RegOpenKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) override
    {
        const LSTATUS status = RegOpenKeyExW(parent, subKey, KEY_READ | KEY_WRITE, key);
        return status == Status(ERROR_ACCESS_DENIED) ? RegOpenKeyExW(parent, subKey, KEY_READ, key) : status;
    }

    LSTATUS RegCreateKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) override
    {
        return RegCreateKeyExW(parent, subKey, KEY_READ | KEY_WRITE, key);
    }

    LSTATUS RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* type, void* data, DWORD* size) override
    {
        if (data != nullptr && size == nullptr)
            return Status(ERROR_INVALID_PARAMETER);
        return With(key, queryValues,
                    [&](Hive& hive, Hive::Key id)
                    {
                        Hive::Value value;
                        const LSTATUS status = hive.Query(id, Text(name), value);
                        return status == success ? GiveValue(value, type, data, size) : status;
                    });
    }

    LSTATUS RegSetValueExW(HKEY key, const wchar_t* name, DWORD type, const void* data, DWORD size) override
    {
        if (data == nullptr && size != 0)
            return Status(ERROR_NOACCESS);
        return With(key, setValues,
                    [&](Hive& hive, Hive::Key id) {
                        return hive.Set(id, Text(name), type, {static_cast<const char*>(data), size});
                    });
    }

    LSTATUS RegSetValueW(HKEY key, const wchar_t* subKey, const wchar_t* text) override
    {
        return WhileMemoryLasts(
            [&]
            {
                const std::u16string stored = formats::Utf16FromWide(Text(text));
                const auto set = [&](HKEY target)
                {
                    return RegSetValueExW(target, nullptr, REG_SZ, stored.c_str(),
                                          static_cast<DWORD>((stored.size() + 1) * sizeof(char16_t)));
                };
                if (Text(subKey).empty())
                    return set(key); // by the right that this handle has
                HKEY target = nullptr;
                LSTATUS status = RegCreateKeyExW(key, subKey, KEY_WRITE, target);
                if (status != success)
                    return status;
                status = set(target);
                RegCloseKey(target);
                return status;
            });
    }

    LSTATUS RegDeleteValueW(HKEY key, const wchar_t* name) override
    {
        return With(key, setValues, [&](Hive& hive, Hive::Key id) { return hive.DeleteValue(id, Text(name)); });
    }

    LSTATUS RegCloseKey(HKEY key) override
    {
        const std::lock_guard lock(m_mutex);
        if (HiveOf(key) != nullptr)
            return success;
        return m_keys.Remove(key) ? success : Status(ERROR_INVALID_HANDLE);
    }

    LSTATUS SHDeleteKeyW(HKEY parent, const wchar_t* subKey) override
    {
        return With(parent, nothing, [&](Hive& hive, Hive::Key id) { return hive.DeleteTree(id, Text(subKey)); });
    }

    LSTATUS RegEnumKeyExW(HKEY key, DWORD index, wchar_t* name, DWORD& length) override
    {
        return With(key, enumerateSubKeys,
                    [&](Hive& hive, Hive::Key id)
                    {
                        std::wstring found;
                        const LSTATUS status = hive.SubKeyAt(id, index, found);
                        return status == success ? GiveName(found, name, length) : status;
                    });
    }

    LSTATUS RegEnumValueW(HKEY key, DWORD index, wchar_t* name, DWORD& length, DWORD* type, void* data,
                          DWORD* size) override
    {
        if (data != nullptr && size == nullptr)
            return Status(ERROR_INVALID_PARAMETER);
        return With(key, queryValues,
                    [&](Hive& hive, Hive::Key id)
                    {
                        std::wstring found;
                        Hive::Value value;
                        LSTATUS status = hive.ValueAt(id, index, found, value);
                        if (status == success)
                            status = GiveName(found, name, length);
                        return status == success ? GiveValue(value, type, data, size) : status;
                    });
    }

    LSTATUS RegQueryInfoKeyW(HKEY key, RegistryKeyInfo& info) override
    {
        return With(key, queryValues, [&](Hive& hive, Hive::Key id) { return hive.Info(id, info); });
    }

    void Rest() override
    {
        const std::lock_guard lock(m_mutex);
        m_user->Close();
        m_machine->Close();
    }

private:
    /// A database must not be open across a fork: its locks are the parent's alone.
    void Hold() override
    {
        m_mutex.lock();
        m_user->CloseAtOnce();
        m_machine->CloseAtOnce();
    }

    void Release() override { m_mutex.unlock(); }

    std::unique_ptr<Hive>* HiveOf(HKEY root)
    {
        return root == HKEY_CURRENT_USER ? &m_user : root == HKEY_LOCAL_MACHINE ? &m_machine : nullptr;
    }

    /// Runs an operation on the key behind a handle that has the right to it. One that finds SQLite not loaded yet has
    /// done nothing.
    template <class Operation>
    LSTATUS With(HKEY handle, DWORD right, Operation&& operation)
    {
        const LSTATUS status = WithLoaded(handle, right, operation);
        const bool isToLoad = status == Status(ERROR_MOD_NOT_FOUND) && posix::LoadSqlite(m_mutex);
        return isToLoad ? WithLoaded(handle, right, operation) : status;
    }

    template <class Operation>
    LSTATUS WithLoaded(HKEY handle, DWORD right, Operation& operation)
    {
        const std::lock_guard lock(m_mutex);
        return WhileMemoryLasts(
            [&]
            {
                if (std::unique_ptr<Hive>* const hive = HiveOf(handle))
                    return operation(**hive, Hive::root);
                const posix::OpenKeys::Entry* const entry = m_keys.Find(handle);
                if (entry == nullptr)
                    return Status(ERROR_INVALID_HANDLE);
                if (entry->generation != (*entry->hive)->Generation())
                    return Status(ERROR_KEY_DELETED);
                if ((entry->access & right) != right)
                    return Status(ERROR_ACCESS_DENIED);
                return operation(**entry->hive, entry->key);
            });
    }

    template <class Work>
    static LSTATUS WhileMemoryLasts(Work&& work)
    {
        try
        {
            return work();
        }
        catch (const std::bad_alloc&)
        {
            return Status(ERROR_NOT_ENOUGH_MEMORY);
        }
    }

    static bool IsToWrite(DWORD access) { return (access & KEY_WRITE & ~KEY_READ) != 0; }

    template <class Find>
    LSTATUS OpenKey(HKEY parent, DWORD access, HKEY& key, Find&& find)
    {
        return With(
            parent, nothing,
            [&](Hive& hive, Hive::Key id)
            {
                Hive::Key found;
                LSTATUS status = find(hive, id, found);
                if (status == success && IsToWrite(access))
                    status = hive.Writable();
                if (status == success)
                    key = m_keys.Add({&hive == m_user.get() ? &m_user : &m_machine, hive.Generation(), found, access});
                return status;
            });
    }

    std::mutex m_mutex;
    std::unique_ptr<Hive> m_user;
    std::unique_ptr<Hive> m_machine;
    posix::OpenKeys m_keys;
};

}

ServiceSlot<RegistryService>& RegistrySlot() noexcept
{
    static ServiceSlot<RegistryService> slot(PosixRegistry::The());
    return slot;
}

bool SetHiveFile(HKEY hive, const path& file)
{
    // Wherever the program goes later.
    boost::system::error_code failure;
    const path folder = file.empty() || file.is_absolute() ? path() : boost::filesystem::current_path(failure);
    return !failure && AreWhole(file) && PosixRegistry::The().SetFile(hive, folder / file);
}

path HiveFile(HKEY hive) { return PosixRegistry::The().FileOf(hive); }

}
