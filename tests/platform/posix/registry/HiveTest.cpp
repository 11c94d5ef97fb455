#include "utility/platform/posix/registry/Hive.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/FailingDatabase.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Hives.h"
#include "utility/platform/posix/registry/Status.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <poll.h>
#include <random>
#include <regex>
#include <sched.h>
#include <set>
#include <sqlite3.h>
#include <string>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{

using boost::filesystem::path;
using support::Child;
using support::TemporaryFolder;
using utility::platform::HiveFile;
using utility::platform::Registry;
using utility::platform::SetHiveFile;
using utility::platform::posix::Hive;
using utility::platform::posix::Status;

const LSTATUS missing = Status(ERROR_FILE_NOT_FOUND);
const LSTATUS damaged = Status(ERROR_BADDB);
const LSTATUS denied = Status(ERROR_ACCESS_DENIED);
const LSTATUS deleted = Status(ERROR_KEY_DELETED);

Hive::Key MakeKey(Hive& hive, std::wstring_view keys)
{
    Hive::Key key = 0;
    EXPECT_EQ(hive.FindOrCreate(Hive::root, keys, key), 0);
    return key;
}

LSTATUS SetNumber(Hive& hive, Hive::Key key, std::wstring_view name, std::uint32_t number)
{
    return hive.Set(key, name, REG_DWORD, {reinterpret_cast<const char*>(&number), sizeof(number)});
}

/// The text of a value, or its status in brackets.
std::string Text(Hive& hive, Hive::Key key, std::wstring_view name)
{
    Hive::Value value{};
    const LSTATUS status = hive.Query(key, name, value);
    return status == 0 ? std::string(value.data) : '<' + std::to_string(status) + '>';
}

class HiveTest : public ::testing::Test
{
protected:
    TemporaryFolder m_folder;
    path m_file = m_folder / "settings.db";
};

TEST_F(HiveTest, IsMadeWithItsFoldersWhenTheFirstKeyIs)
{
    const path file = m_folder / "a" / "b" / "settings.db";
    Hive hive(file, Hive::Owner::user);
    Hive::Key key = 0;
    EXPECT_EQ(hive.Find(Hive::root, L"Key", key), missing);
    EXPECT_EQ(hive.Writable(), missing);
    EXPECT_FALSE(exists(m_folder / "a"));
    MakeKey(hive, L"Key");
    EXPECT_TRUE(exists(file));
    hive.Close();
    // Nothing of the making stays behind.
    EXPECT_EQ(std::distance(boost::filesystem::directory_iterator(file.parent_path()), {}), 1);
}

TEST_F(HiveTest, OfAUserIsForTheUserAlone)
{
    for (const auto& [owner, mode] : {std::pair(Hive::Owner::user, 0600u), std::pair(Hive::Owner::machine, 0644u)})
    {
        const path file = m_folder / std::to_string(mode).c_str();
        Hive hive(file, owner);
        MakeKey(hive, L"Key");
        struct stat state = {};
        ASSERT_EQ(::stat(file.c_str(), &state), 0);
        EXPECT_EQ(state.st_mode & 0777, mode);
    }
}

TEST_F(HiveTest, KeysAndValuesOutliveTheHive)
{
    {
        Hive hive(m_file, Hive::Owner::user);
        EXPECT_EQ(hive.Set(MakeKey(hive, L"A\\B"), L"Name", REG_SZ, "text"), 0);
    }
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    ASSERT_EQ(hive.Find(Hive::root, L"a\\b", key), 0);
    EXPECT_EQ(Text(hive, key, L"NAME"), "text");
}

TEST_F(HiveTest, KeysStayGoodWhenItIsClosedBetween)
{
    Hive hive(m_file, Hive::Owner::user);
    const Hive::Key key = MakeKey(hive, L"Key");
    hive.Close();
    EXPECT_EQ(hive.Set(key, L"Name", REG_SZ, "one"), 0);
    hive.Close();
    EXPECT_EQ(Text(hive, key, L"Name"), "one");
    EXPECT_EQ(hive.Generation(), 0u);
}

TEST_F(HiveTest, WhatAnotherWritesIsSeenAtOnce)
{
    Hive reader(m_file, Hive::Owner::user);
    Hive writer(m_file, Hive::Owner::user);
    const Hive::Key key = MakeKey(reader, L"Key");
    EXPECT_EQ(Text(reader, key, L"Name"), "<2>");
    Hive::Key below = 0;
    EXPECT_EQ(reader.Find(key, L"Below", below), missing);
    for (int i = 0; i < 1000; ++i)
    {
        const std::string text = std::to_string(i);
        ASSERT_EQ(writer.Set(key, L"Name", REG_SZ, text), 0);
        ASSERT_EQ(Text(reader, key, L"Name"), text);
        ASSERT_EQ(Text(reader, key, L"Name"), text);
    }
    MakeKey(writer, L"Key\\Below");
    EXPECT_EQ(reader.Find(key, L"Below", below), 0);
    EXPECT_EQ(writer.DeleteTree(Hive::root, L"Key"), 0);
    EXPECT_EQ(Text(reader, key, L"Name"), "<1018>");
}

TEST_F(HiveTest, WhatAnotherProcessWritesIsSeenAtOnce)
{
    Hive hive(m_file, Hive::Owner::user);
    const Hive::Key key = MakeKey(hive, L"Key");
    for (const char* const text : {"one", "two", "three"})
    {
        hive.Close(); // as the registry does before a fork
        Child writer(
            [&]
            {
                Hive own(m_file, Hive::Owner::user);
                return static_cast<int>(own.Set(key, L"Name", REG_SZ, text));
            });
        ASSERT_EQ(writer.ExitCode(), 0);
        EXPECT_EQ(Text(hive, key, L"Name"), text);
    }
}

TEST_F(HiveTest, KeyWithATooLongNameIsNotMade)
{
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    EXPECT_EQ(hive.FindOrCreate(Hive::root, L"Top\\" + std::wstring(257, L'k'), key), Status(ERROR_INVALID_PARAMETER));
    // Nor is what would be on the way to it.
    EXPECT_EQ(hive.Find(Hive::root, L"Top", key), missing);
}

TEST_F(HiveTest, DeletedAsAWholeIsEmptyAndTakesKeysAndValuesAgain)
{
    Hive hive(m_file, Hive::Owner::user);
    const Hive::Key key = MakeKey(hive, L"A\\B");
    EXPECT_EQ(hive.Set(key, L"Name", REG_SZ, "old"), 0);
    EXPECT_EQ(hive.Set(Hive::root, L"Name", REG_SZ, "old"), 0);
    EXPECT_EQ(hive.DeleteTree(Hive::root, L""), 0);
    EXPECT_EQ(Text(hive, key, L"Name"), "<1018>");
    EXPECT_EQ(Text(hive, Hive::root, L"Name"), "<2>");
    std::wstring name;
    EXPECT_EQ(hive.SubKeyAt(Hive::root, 0, name), Status(ERROR_NO_MORE_ITEMS));
    EXPECT_EQ(hive.Set(Hive::root, L"Name", REG_SZ, "new"), 0);
    EXPECT_EQ(Text(hive, Hive::root, L"Name"), "new");
    EXPECT_EQ(hive.Set(MakeKey(hive, L"A"), L"Name", REG_SZ, "new"), 0);
    // Its own key is no other key's child that could be deleted in a round.
    EXPECT_EQ(hive.DeleteTree(Hive::root, L"A"), 0);
    EXPECT_EQ(Text(hive, Hive::root, L"Name"), "new");
}

TEST_F(HiveTest, IsMadeAlsoByAValueOfItsRoot)
{
    Hive hive(m_file, Hive::Owner::user);
    EXPECT_EQ(hive.Set(Hive::root, L"Name", REG_SZ, "text"), 0);
    EXPECT_EQ(Text(hive, Hive::root, L"Name"), "text");
}

TEST_F(HiveTest, EnumerationGoesOnWhereTheNamesAreNow)
{
    Hive hive(m_file, Hive::Owner::user);
    Hive other(m_file, Hive::Owner::user);
    const Hive::Key key = MakeKey(hive, L"Key");
    for (const wchar_t* const each : {L"", L"b", L"d", L"f", L"h"})
    {
        EXPECT_EQ(hive.Set(key, each, REG_SZ, "x"), 0);
        if (*each != L'\0')
            MakeKey(hive, L"Key\\" + std::wstring(each));
    }
    const auto valueAt = [&](DWORD index)
    {
        std::wstring name = L"none";
        Hive::Value value{};
        hive.ValueAt(key, index, name, value);
        return name;
    };
    const auto keyAt = [&](DWORD index)
    {
        std::wstring name = L"none";
        hive.SubKeyAt(key, index, name);
        return name;
    };
    EXPECT_EQ(valueAt(0), L"");
    EXPECT_EQ(valueAt(1), L"b");
    EXPECT_EQ(valueAt(1), L"b");
    EXPECT_EQ(keyAt(1), L"d");
    EXPECT_EQ(valueAt(3), L"f");
    EXPECT_EQ(valueAt(2), L"d");
    EXPECT_EQ(valueAt(5), L"none");
    EXPECT_EQ(keyAt(2), L"f");
    EXPECT_EQ(keyAt(4), L"none");
    // What is deleted or comes between moves the rest, whoever does it.
    EXPECT_EQ(Text(hive, key, L"b"), "x");
    EXPECT_EQ(valueAt(2), L"d");
    EXPECT_EQ(hive.DeleteValue(key, L"d"), 0);
    EXPECT_EQ(valueAt(2), L"f");
    EXPECT_EQ(Text(hive, key, L"b"), "x");
    EXPECT_EQ(valueAt(2), L"f");
    EXPECT_EQ(other.Set(key, L"a", REG_SZ, "x"), 0);
    EXPECT_EQ(valueAt(2), L"b");
    EXPECT_EQ(valueAt(3), L"f");
    EXPECT_EQ(other.DeleteTree(key, L"b"), 0);
    EXPECT_EQ(keyAt(1), L"f");
}

/// The processor's time that a key with so many values and subkeys takes to enumerate the ones, and the others, each of
/// which is enumerated on the way.
std::array<double, 2> TimesToEnumerate(Hive& hive, std::uint32_t count)
{
    const std::wstring name = std::to_wstring(count);
    const Hive::Key key = MakeKey(hive, name);
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const std::wstring each = std::to_wstring(i);
        MakeKey(hive, name + L'\\' + each);
        EXPECT_EQ(SetNumber(hive, key, each, i), 0);
    }
    std::set<std::wstring> found;
    std::wstring at;
    Hive::Value value{};
    const std::clock_t begin = std::clock();
    for (DWORD i = 0; hive.ValueAt(key, i, at, value) == 0; ++i)
        found.insert(L'v' + at);
    const std::clock_t middle = std::clock();
    for (DWORD i = 0; hive.SubKeyAt(key, i, at) == 0; ++i)
    {
        found.insert(L'k' + at);
        Hive::Key below = 0;
        EXPECT_EQ(hive.Find(key, at, below), 0);
        EXPECT_EQ(hive.SubKeyAt(below, 0, at), Status(ERROR_NO_MORE_ITEMS));
    }
    const std::clock_t end = std::clock();
    EXPECT_EQ(found.size(), 2 * count);
    return {static_cast<double>(middle - begin), static_cast<double>(end - middle)};
}

TEST_F(HiveTest, TenTimesAsManyNamesTakeAboutTenTimesAsLongToEnumerate)
{
    Hive hive(m_file, Hive::Owner::user);
    const auto few = TimesToEnumerate(hive, 400);
    const auto many = TimesToEnumerate(hive, 4000);
    // Were each looked for from the start, it would come near a hundred.
    EXPECT_LT(many[0], 30 * few[0]);
    EXPECT_LT(many[1], 30 * few[1]);
}

TEST_F(HiveTest, LargeValuesAreReadEachTime)
{
    Hive hive(m_file, Hive::Owner::user);
    const Hive::Key key = MakeKey(hive, L"Key");
    const std::string large(100000, 'x');
    EXPECT_EQ(hive.Set(key, L"Large", REG_BINARY, large), 0);
    EXPECT_EQ(Text(hive, key, L"Large"), large);
    EXPECT_EQ(Text(hive, key, L"Large"), large);
}

TEST_F(HiveTest, MoreNamesThanAreRememberedAreReadAsWell)
{
    Hive hive(m_file, Hive::Owner::user);
    const Hive::Key key = MakeKey(hive, L"Key");
    EXPECT_EQ(hive.Set(key, L"7777", REG_SZ, "here"), 0);
    for (int i = 0; i < 10000; ++i)
        ASSERT_EQ(Text(hive, key, std::to_wstring(i)), i == 7777 ? "here" : "<2>");
}

TEST_F(HiveTest, ReplacedFileEndsTheKeysOfTheOldOne)
{
    Hive hive(m_file, Hive::Owner::user);
    const Hive::Key key = MakeKey(hive, L"Key");
    EXPECT_EQ(hive.Set(key, L"Name", REG_SZ, "old"), 0);
    for (const char* const suffix : {"", "-wal", "-shm"})
        boost::filesystem::remove(m_file.native() + suffix);
    // Nothing is written into a file that nobody would find again.
    EXPECT_EQ(hive.Set(key, L"Name", REG_SZ, "lost"), deleted);
    MakeKey(hive, L"Other");
    EXPECT_EQ(hive.Generation(), 1u);
    Hive again(m_file, Hive::Owner::user);
    Hive::Key found = 0;
    EXPECT_EQ(again.Find(Hive::root, L"Key", found), missing);
    EXPECT_EQ(again.Find(Hive::root, L"Other", found), 0);
}

TEST_F(HiveTest, ThatWasMovedIsWrittenWhereItWasExpected)
{
    Hive hive(m_file, Hive::Owner::user);
    MakeKey(hive, L"Key");
    hive.Close();
    Hive::Key key = 0;
    ASSERT_EQ(hive.Find(Hive::root, L"Key", key), 0);
    // A copy of it, as from a backup, comes into its place.
    hive.Close();
    const std::string bytes = TemporaryFolder::BytesOf(m_file);
    ASSERT_EQ(hive.Find(Hive::root, L"Key", key), 0);
    m_folder.File("copy", bytes);
    rename(m_folder / "copy", m_file);
    EXPECT_EQ(hive.Set(key, L"Name", REG_SZ, "x"), deleted);
    ASSERT_EQ(hive.Find(Hive::root, L"Key", key), 0);
    EXPECT_EQ(hive.Set(key, L"Name", REG_SZ, "x"), 0);
    EXPECT_EQ(Text(hive, key, L"Name"), "x");
}

TEST_F(HiveTest, KeyTreeOfAnyDepthIsDeletedWhole)
{
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = MakeKey(hive, L"Top");
    for (int i = 0; i < 3000; ++i)
        ASSERT_EQ(hive.FindOrCreate(key, L"Down", key), 0);
    EXPECT_EQ(SetNumber(hive, key, L"Name", 1), 0);
    EXPECT_EQ(hive.DeleteTree(Hive::root, L"Top"), 0);
    EXPECT_EQ(Text(hive, key, L"Name"), "<1018>");
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(m_file.c_str(), &database), SQLITE_OK);
    const auto count = [&](const char* question)
    {
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(database, question, -1, &statement, nullptr), SQLITE_OK);
        EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
        const int result = sqlite3_column_int(statement, 0);
        sqlite3_finalize(statement);
        return result;
    };
    EXPECT_EQ(count("select count(*) from keys"), 1);
    EXPECT_EQ(count("select count(*) from \"values\""), 0);
    sqlite3_close(database);
}

// Damaged hives

/// The bytes of a hive with a key "Key" and some values in it.
std::string SampleHive(const TemporaryFolder& folder)
{
    const path file = folder / "sample.db";
    {
        Hive hive(file, Hive::Owner::user);
        const Hive::Key key = MakeKey(hive, L"Key");
        for (std::uint32_t i = 0; i < 50; ++i)
            EXPECT_EQ(SetNumber(hive, key, L"Value" + std::to_wstring(i), i), 0);
    }
    return TemporaryFolder::BytesOf(file);
}

/// Does everything that can be done to a hive; what comes of it does not matter, as long as it comes to an end.
void UseAll(const path& file)
{
    Hive hive(file, Hive::Owner::user);
    Hive::Key key = Hive::root;
    Hive::Value value{};
    std::wstring name;
    utility::platform::RegistryKeyInfo info;
    hive.Find(Hive::root, L"Key", key);
    hive.Query(key, L"Value7", value);
    for (DWORD i = 0; i < 60 && hive.ValueAt(key, i, name, value) == 0; ++i)
        ;
    for (DWORD i = 0; i < 60 && hive.SubKeyAt(Hive::root, i, name) == 0; ++i)
        ;
    hive.Info(key, info);
    hive.FindOrCreate(Hive::root, L"Other\\Key", key);
    SetNumber(hive, key, L"Name", 1);
    hive.DeleteValue(key, L"Name");
    hive.DeleteTree(Hive::root, L"Key");
}

/// Runs work as a user without rights, who may look into the folder.
int AsNobody(const TemporaryFolder& folder, const std::function<int()>& work)
{
    ::chmod(folder.Path().c_str(), 0755);
    Child child(
        [&]
        {
            constexpr uid_t nobody = 65534;
            if (::geteuid() == 0 && ::setresuid(nobody, nobody, nobody) != 0)
                return 99;
            if (::geteuid() != nobody)
                ::chmod(folder.Path().c_str(), 0555);
            return work();
        });
    const int code = child.ExitCode();
    ::chmod(folder.Path().c_str(), 0755);
    return code;
}

/// What stands in a folder, by name.
std::map<std::string, std::string> FilesIn(const path& folder)
{
    std::map<std::string, std::string> files;
    for (const auto& each : boost::filesystem::directory_iterator(folder))
        files[each.path().filename().native()] = TemporaryFolder::BytesOf(each.path());
    return files;
}

class DamagedHiveTest : public HiveTest
{
protected:
    /// Puts bytes into the hive's place, and expects that they are found set aside, under the date, with a new hive in
    /// their place.
    void ExpectSetAside(const std::string& bytes)
    {
        boost::filesystem::remove_all(m_home);
        create_directory(m_home);
        m_folder.File("home/settings.db", bytes);
        {
            Hive hive(m_file, Hive::Owner::user);
            Hive::Key key = 0;
            ASSERT_EQ(hive.Find(Hive::root, L"Key", key), missing);
            ExpectAside({{"", bytes}});
            EXPECT_EQ(hive.Set(MakeKey(hive, L"Key"), L"Name", REG_SZ, "new"), 0);
            EXPECT_EQ(Text(hive, MakeKey(hive, L"Key"), L"Name"), "new");
        }
        EXPECT_TRUE(exists(m_file));
        ExpectAside({{"", bytes}});
    }

    /// Expects that but for the hive's own files just these stand there: suffixes and bytes. SQLite may have made a log
    /// without anything in it.
    void ExpectAside(const std::map<std::string, std::string>& expected)
    {
        const std::regex form(R"(settings\.db\.damaged-20\d{6}-\d{6}\.\d{6}(|-wal|-shm|-journal))");
        std::map<std::string, std::string> aside;
        for (const auto& [name, bytes] : FilesIn(m_home))
        {
            std::smatch parts;
            if (!std::regex_match(name, parts, form))
                EXPECT_TRUE(std::regex_match(name, std::regex(R"(settings\.db(|-wal|-shm))"))) << name;
            else if (parts[1] != "-shm" && (parts[1] != "-wal" || !bytes.empty()))
                aside[parts[1]] = bytes;
        }
        EXPECT_TRUE(aside == expected) << aside.size();
    }

    /// Expects that a hive that is damaged is refused and stays as it is, with what stands beside it.
    void ExpectRefused(LSTATUS status = damaged)
    {
        const auto before = FilesIn(m_home);
        Hive hive(m_file, Hive::Owner::user);
        Hive::Key key = 0;
        EXPECT_EQ(hive.Find(Hive::root, L"Key", key), status);
        EXPECT_EQ(hive.FindOrCreate(Hive::root, L"Key", key), status);
        hive.Close();
        EXPECT_TRUE(FilesIn(m_home) == before);
    }

    DamagedHiveTest() { create_directory(m_home); }

    const path m_home = m_folder / "home";
    const path m_file = m_home / "settings.db";
};

TEST_F(DamagedHiveTest, CutAnywhereIsSetAsideAtStart)
{
    const std::string whole = SampleHive(m_folder);
    // Within its last page SQLite takes no notice.
    for (std::size_t size = 0; size <= whole.size() - 4096; size += size < 200 ? 1 : 511)
    {
        ExpectSetAside(whole.substr(0, size));
        ASSERT_FALSE(HasFailure()) << size;
    }
}

TEST_F(DamagedHiveTest, OfRandomBytesIsSetAsideAtStart)
{
    std::mt19937 random(1);
    for (const std::size_t size : {1u, 100u, 512u, 4096u, 20000u})
    {
        std::string bytes(size, '\0');
        for (char& each : bytes)
            each = static_cast<char>(random());
        ExpectSetAside(bytes);
    }
}

TEST_F(DamagedHiveTest, WhoseTableOfKeysIsOverwrittenIsSetAsideAtStart)
{
    std::string bytes = SampleHive(m_folder);
    bytes.replace(4096, 4096, 4096, 'x');
    ExpectSetAside(bytes);
}

TEST_F(DamagedHiveTest, GoesAsideWithItsLogAsItIs)
{
    const std::string log(5000, '\x37');
    for (const std::string& bytes : {std::string(), std::string(4096, 'x'), SampleHive(m_folder).substr(0, 6000)})
    {
        boost::filesystem::remove_all(m_home);
        create_directory(m_home);
        m_folder.File("home/settings.db", bytes);
        m_folder.File("home/settings.db-wal", log);
        m_folder.File("home/settings.db-journal", "journal");
        Hive hive(m_file, Hive::Owner::user);
        Hive::Key key = 0;
        EXPECT_EQ(hive.Find(Hive::root, L"Key", key), missing);
        const auto files = FilesIn(m_home);
        EXPECT_EQ(std::ranges::count_if(files, [&](const auto& each) { return each.second == log; }), 1);
        for (const char* const suffix : {"", "-wal", "-shm", "-journal"})
            EXPECT_FALSE(files.contains(std::string("settings.db") + suffix)) << suffix;
        EXPECT_EQ(hive.Set(MakeKey(hive, L"Key"), L"Name", REG_SZ, "new"), 0);
        hive.Close();
        EXPECT_EQ(FilesIn(m_home).size(), files.size() + 1);
    }
}

TEST_F(DamagedHiveTest, ThatAnotherProcessUsesStaysWhereItIs)
{
    m_folder.File("home/settings.db", std::string(4096, 'x'));
    int ready[2];
    int done[2];
    ASSERT_EQ(::pipe(ready), 0);
    ASSERT_EQ(::pipe(done), 0);
    Child user(
        [&]
        {
            const int file = ::open(m_file.c_str(), O_RDWR);
            // As SQLite locks what is read.
            struct flock lock = {F_RDLCK, SEEK_SET, 0x40000002, 510, 0};
            char byte = 0;
            const bool isLocked = ::fcntl(file, F_SETLK, &lock) == 0;
            ::close(done[1]);
            return isLocked && ::write(ready[1], "x", 1) == 1 && ::read(done[0], &byte, 1) == 0 ? 0 : 1;
        });
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    ExpectRefused();
    for (const int each : {ready[0], ready[1], done[0], done[1]})
        ::close(each);
    EXPECT_EQ(user.ExitCode(), 0);
    Hive hive(m_file, Hive::Owner::user);
    MakeKey(hive, L"Key");
    ExpectAside({{"", std::string(4096, 'x')}});
}

TEST_F(DamagedHiveTest, ThatMayNotBeWrittenStaysWhereItIs)
{
    m_folder.File("home/settings.db", std::string(4096, 'x'));
    for (const auto& [file, folder] : {std::pair(0444, 0777), std::pair(0666, 0555)})
    {
        ::chmod(m_file.c_str(), file);
        ::chmod(m_home.c_str(), folder);
        EXPECT_EQ(AsNobody(m_folder,
                           [&]
                           {
                               ExpectRefused();
                               return HasFailure() ? 1 : 0;
                           }),
                  0);
    }
    ::chmod(m_home.c_str(), 0777);
}

TEST_F(DamagedHiveTest, IsSetAsideOnceByProcessesThatStartAtOnce)
{
    for (int round = 0; round < 5; ++round)
    {
        boost::filesystem::remove_all(m_home);
        create_directory(m_home);
        m_folder.File("home/settings.db", std::string(4096, 'x'));
        std::vector<std::unique_ptr<Child>> children;
        for (std::uint32_t i = 0; i < 8; ++i)
            children.push_back(std::make_unique<Child>(
                [this, i]
                {
                    Hive hive(m_file, Hive::Owner::user);
                    // One that looks while another sets it aside is refused, and comes again.
                    Hive::Key key = 0;
                    while (hive.FindOrCreate(Hive::root, L"Shared", key) == damaged)
                        ;
                    return static_cast<int>(SetNumber(hive, key, L"Value" + std::to_wstring(i), i));
                }));
        for (const auto& each : children)
            EXPECT_EQ(each->ExitCode(), 0);
        Hive hive(m_file, Hive::Owner::user);
        utility::platform::RegistryKeyInfo info;
        ASSERT_EQ(hive.Info(MakeKey(hive, L"Shared"), info), 0);
        EXPECT_EQ(info.values, 8u);
        ExpectAside({{"", std::string(4096, 'x')}});
    }
}

TEST_F(HiveTest, LogOfAHiveThatIsGoneIsNotThatOfTheNext)
{
    {
        Hive hive(m_file, Hive::Owner::user);
        EXPECT_EQ(hive.Set(MakeKey(hive, L"Old"), L"Name", REG_SZ, "old"), 0);
        copy_file(m_file.native() + "-wal", m_folder / "log");
    }
    boost::filesystem::remove(m_file);
    rename(m_folder / "log", m_file.native() + "-wal");
    const std::string log = TemporaryFolder::BytesOf(m_file.native() + "-wal");
    {
        Hive hive(m_file, Hive::Owner::user);
        EXPECT_EQ(hive.Set(MakeKey(hive, L"New"), L"Name", REG_SZ, "new"), 0);
        Hive::Key key = 0;
        EXPECT_EQ(hive.Find(Hive::root, L"Old", key), missing);
        EXPECT_EQ(Text(hive, MakeKey(hive, L"New"), L"Name"), "new");
    }
    const auto files = FilesIn(m_folder.Path());
    EXPECT_EQ(files.size(), 2u);
    EXPECT_TRUE(files.rbegin()->second == log) << files.rbegin()->first;
}

// Others who write, or do not let go

/// Another process that begins something with a database and stays in the midst of it until it is to let go, and for
/// some time more.
class OtherUser
{
public:
    OtherUser(const path& file, const char* statements, int milliseconds = 0)
    {
        EXPECT_EQ(::pipe(m_begun), 0);
        EXPECT_EQ(::pipe(m_end), 0);
        m_child = std::make_unique<Child>(
            [&]
            {
                ::close(m_end[1]);
                sqlite3* database = nullptr;
                if (sqlite3_open(file.c_str(), &database) != SQLITE_OK ||
                    sqlite3_exec(database, statements, nullptr, nullptr, nullptr) != SQLITE_OK ||
                    ::write(m_begun[1], "x", 1) != 1)
                    return 1;
                char byte = 0;
                while (::read(m_end[0], &byte, 1) > 0)
                    continue;
                ::poll(nullptr, 0, milliseconds);
                return 0; // and nothing of it has happened
            });
        ::close(m_begun[1]);
        char byte = 0;
        EXPECT_EQ(::read(m_begun[0], &byte, 1), 1);
    }
    OtherUser(const OtherUser&) = delete;
    OtherUser& operator=(const OtherUser&) = delete;
    ~OtherUser()
    {
        LetGo();
        EXPECT_EQ(m_child->ExitCode(), 0);
        ::close(m_end[0]);
        ::close(m_begun[0]);
    }

    void LetGo()
    {
        if (m_end[1] >= 0)
            ::close(std::exchange(m_end[1], -1));
    }

private:
    int m_begun[2]{};
    int m_end[2]{};
    std::unique_ptr<Child> m_child;
};

void Execute(const path& file, const char* statements)
{
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, statements, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    EXPECT_EQ(sqlite3_close(database), SQLITE_OK);
}

constexpr char writing[] = "begin immediate; update \"values\" set data = x'6E6577'";
constexpr char withoutALog[] = "pragma journal_mode = delete";

/// Longer than who reads waits and shorter than who writes does, in microseconds.
constexpr std::int64_t betweenReadersAndWriters = 2'500'000;

class HiveOfOthersTest : public HiveTest
{
protected:
    HiveOfOthersTest()
    {
        Hive hive(m_file, Hive::Owner::user);
        m_key = MakeKey(hive, L"Key");
        EXPECT_EQ(hive.Set(m_key, L"Name", REG_SZ, "old"), 0);
    }

    Hive::Key m_key = 0;
};

TEST_F(HiveOfOthersTest, IsReadWhileAnotherProcessIsWriting)
{
    Hive open(m_file, Hive::Owner::user);
    EXPECT_EQ(open.Writable(), 0);
    const OtherUser other(m_file, writing);
    EXPECT_EQ(Text(open, m_key, L"Name"), "old");
    Hive closed(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    EXPECT_EQ(closed.Find(Hive::root, L"Key", key), 0);
    EXPECT_EQ(Text(closed, key, L"Name"), "old");
}

TEST_F(HiveOfOthersTest, ThatHasNoLogIsRefusedSoonToWhoReadsAndLateToWhoWrites)
{
    Execute(m_file, withoutALog);
    Hive open(m_file, Hive::Owner::user);
    EXPECT_EQ(open.Writable(), 0);
    Hive closed(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    {
        const OtherUser other(m_file, "begin exclusive");
        const std::int64_t start = support::FailingDatabase::Slept();
        EXPECT_EQ(closed.Find(Hive::root, L"Key", key), Status(ERROR_BUSY));
        EXPECT_EQ(Text(open, m_key, L"Name"), "<170>");
        EXPECT_LT(support::FailingDatabase::Slept() - start, betweenReadersAndWriters);
        EXPECT_EQ(open.Set(m_key, L"Name", REG_SZ, "new"), Status(ERROR_BUSY));
        EXPECT_GT(support::FailingDatabase::Slept() - start, betweenReadersAndWriters);
    }
    {
        OtherUser other(m_file, "begin exclusive", 1000);
        other.LetGo();
        EXPECT_EQ(closed.FindOrCreate(Hive::root, L"Key", key), 0);
    }
    EXPECT_EQ(closed.Set(key, L"Name", REG_SZ, "new"), 0);
    EXPECT_EQ(Text(open, m_key, L"Name"), "new");
}

// Hives on a network

class HiveOnANetworkTest : public HiveTest, public ::testing::WithParamInterface<long>
{
protected:
    /// The first of the file's two marks of a database with a log is 2.
    static bool HasLog(const path& file) { return TemporaryFolder::BytesOf(file).at(18) == 2; }

    static bool Stands(const path& file, const char* suffix) { return exists(path(file.native() + suffix)); }
};

TEST_P(HiveOnANetworkTest, IsMadeWithoutALogInSharedMemory)
{
    const support::FileSystemOfKind network(GetParam());
    Hive hive(m_file, Hive::Owner::user);
    const Hive::Key key = MakeKey(hive, L"Key");
    EXPECT_EQ(hive.Set(key, L"Name", REG_SZ, "text"), 0);
    EXPECT_EQ(Text(hive, key, L"Name"), "text");
    EXPECT_FALSE(HasLog(m_file));
    EXPECT_FALSE(Stands(m_file, "-wal") || Stands(m_file, "-shm"));
    Hive other(m_file, Hive::Owner::user);
    EXPECT_EQ(other.Set(key, L"Name", REG_SZ, "later"), 0);
    EXPECT_EQ(Text(hive, key, L"Name"), "later");
}

TEST_P(HiveOnANetworkTest, LosesTheLogItCameWithAndKeepsWhatIsInIt)
{
    m_folder.File("settings.db", SampleHive(m_folder));
    {
        Child killed(
            [&]
            {
                Hive hive(m_file, Hive::Owner::user);
                if (hive.Set(MakeKey(hive, L"Key"), L"Name", REG_SZ, "in the log") != 0)
                    return 1;
                ::_exit(0);
            });
        EXPECT_EQ(killed.ExitCode(), 0);
    }
    ASSERT_TRUE(HasLog(m_file));
    ASSERT_TRUE(Stands(m_file, "-wal"));
    const support::FileSystemOfKind network(GetParam());
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    EXPECT_EQ(hive.Find(Hive::root, L"Key", key), 0);
    EXPECT_EQ(Text(hive, key, L"Name"), "in the log");
    EXPECT_FALSE(HasLog(m_file));
    EXPECT_FALSE(Stands(m_file, "-wal"));
    // And nothing keeps others out.
    Hive other(m_file, Hive::Owner::user);
    EXPECT_EQ(other.Set(key, L"Name", REG_SZ, "later"), 0);
    EXPECT_EQ(Text(hive, key, L"Name"), "later");
}

TEST_P(HiveOnANetworkTest, IsRefusedWhileOthersUseTheLogItCameWith)
{
    m_folder.File("settings.db", SampleHive(m_folder));
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    {
        const OtherUser other(m_file, "select * from keys");
        const support::FileSystemOfKind network(GetParam());
        EXPECT_EQ(hive.Find(Hive::root, L"Key", key), Status(ERROR_BUSY));
    }
    const support::FileSystemOfKind network(GetParam());
    EXPECT_EQ(hive.Find(Hive::root, L"Key", key), 0);
    EXPECT_FALSE(HasLog(m_file));
}

INSTANTIATE_TEST_SUITE_P(Kinds, HiveOnANetworkTest,
                         ::testing::Values(0x6969, 0x517B, 0xFF534D42, 0xFE534D42, 0x65735546, 0x01021997, 0x12345678));

TEST_F(HiveTest, OnADiskHasALogAndStaysWithoutOneThatSomebodyTookAway)
{
    for (const long kind : {0xEF53L, 0x58465342L, 0x9123683EL, 0x01021994L, 0x794C7630L})
    {
        const support::FileSystemOfKind disk(kind);
        boost::filesystem::remove(m_file);
        Hive hive(m_file, Hive::Owner::user);
        MakeKey(hive, L"Key");
        EXPECT_TRUE(exists(path(m_file.native() + "-wal"))) << kind;
        hive.Close();
        Execute(m_file, withoutALog);
        MakeKey(hive, L"Other");
        EXPECT_FALSE(exists(path(m_file.native() + "-wal"))) << kind;
    }
}

TEST_F(HiveTest, OnAFileSystemThatSaysNothingIsMadeWithoutALog)
{
    const support::FailingCall failing("statfs", EIO, support::FailingCall::always);
    Hive hive(m_file, Hive::Owner::user);
    MakeKey(hive, L"Key");
    EXPECT_TRUE(failing.HasFailed());
    EXPECT_FALSE(exists(path(m_file.native() + "-wal")));
}

// Hives for which the process has no room

TEST_F(HiveTest, ThatIsMadeShortOfDescriptorsIsMadeWholeOrNotAtAll)
{
    int refused = 0;
    for (int left = 0; left < 8; ++left)
    {
        const path file = m_folder / std::to_string(left).c_str() / "settings.db";
        create_directory(file.parent_path());
        Child child(
            [&]
            {
                const int first = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
                ::close(first);
                const rlimit limit{static_cast<rlim_t>(first + left), 1024};
                if (::setrlimit(RLIMIT_NOFILE, &limit) != 0)
                    return 99;
                Hive hive(file, Hive::Owner::user);
                Hive::Key key = 0;
                const LSTATUS status = hive.FindOrCreate(Hive::root, L"Key", key);
                return status == 0 ? 0 : status == Status(ERROR_TOO_MANY_OPEN_FILES) ? 1 : 2;
            });
        const int code = child.ExitCode();
        EXPECT_TRUE(code == 0 || code == 1) << code << " with " << left;
        EXPECT_EQ(is_empty(file.parent_path()), !exists(file)) << left;
        EXPECT_TRUE(code == 1 || exists(file)) << left;
        refused += code;
        // It works in the next process.
        Hive hive(file, Hive::Owner::user);
        EXPECT_EQ(hive.Set(MakeKey(hive, L"Key"), L"Name", REG_SZ, "text"), 0) << left;
    }
    EXPECT_GE(refused, 3);
    EXPECT_LT(refused, 8);
}

TEST_F(HiveTest, ThatIsMadeOnAFullFileSystemIsMadeWholeOrNotAtAll)
{
    for (const char* const limit : {"nr_inodes=2", "nr_inodes=3", "nr_inodes=4", "nr_inodes=5", "size=4k", "size=16k",
                                    "size=32k", "size=64k", "size=128k"})
    {
        Child child(
            [&]
            {
                if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                    ::mount("none", m_folder.Path().c_str(), "tmpfs", 0, limit) != 0)
                    return 99;
                Hive::Key key = 0;
                const LSTATUS status =
                    std::make_unique<Hive>(m_file, Hive::Owner::user)->FindOrCreate(Hive::root, L"Key", key);
                if (status == 0 ? !exists(m_file) : !exists(m_file) && !is_empty(m_folder.Path()))
                    return 1;
                if (::mount("none", m_folder.Path().c_str(), nullptr, MS_REMOUNT, "nr_inodes=0,size=1m") != 0)
                    return 2;
                Hive hive(m_file, Hive::Owner::user);
                return hive.FindOrCreate(Hive::root, L"Key", key) == 0 && hive.Set(key, L"Name", REG_SZ, "text") == 0
                           ? 0
                           : 3;
            });
        const int code = child.ExitCode();
        if (code == 99)
            GTEST_SKIP() << "The user lacks the right to mount file systems";
        EXPECT_EQ(code, 0) << limit;
    }
}

TEST_F(HiveTest, RandomDamageInTheMiddleEndsNothingButTheOperation)
{
    const std::string whole = SampleHive(m_folder);
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round)
    {
        std::string bytes = whole;
        for (int i = 0; i < 1 + round % 40; ++i)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        UseAll(m_folder.File("hurt.db", bytes));
        for (const char* const suffix : {"-wal", "-shm", "-journal"})
            boost::filesystem::remove((m_folder / "hurt.db").native() + suffix);
    }
    Hive hive(m_file, Hive::Owner::user);
    EXPECT_EQ(hive.Set(MakeKey(hive, L"Key"), L"Name", REG_SZ, "text"), 0);
    EXPECT_EQ(Text(hive, MakeKey(hive, L"Key"), L"Name"), "text");
}

TEST_F(HiveTest, LogOfRandomBytesIsIgnored)
{
    m_folder.File("settings.db", SampleHive(m_folder));
    m_folder.File("settings.db-wal", std::string(5000, '\x37'));
    Hive hive(m_file, Hive::Owner::user);
    EXPECT_EQ(hive.Set(MakeKey(hive, L"Key"), L"Name", REG_SZ, "text"), 0);
    EXPECT_EQ(Text(hive, MakeKey(hive, L"Key"), L"Name"), "text");
}

TEST_F(HiveTest, DatabaseOfSomebodyElseIsLeftAlone)
{
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(m_file.c_str(), &database), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(database, "create table keys (a); insert into keys values (1)", nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(database);
    const std::string before = TemporaryFolder::BytesOf(m_file);
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    EXPECT_EQ(hive.Find(Hive::root, L"Key", key), damaged);
    EXPECT_EQ(hive.FindOrCreate(Hive::root, L"Key", key), damaged);
    EXPECT_EQ(TemporaryFolder::BytesOf(m_file), before);
}

class SchemaOfHiveTest : public HiveTest, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(SchemaOfHiveTest, ThatIsWrongIsADamagedHive)
{
    m_folder.File("settings.db", SampleHive(m_folder));
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(m_file.c_str(), &database), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(database, GetParam(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close(database);
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = Hive::root;
    Hive::Value value{};
    const LSTATUS found = hive.Find(Hive::root, L"Key", key);
    EXPECT_TRUE(found == damaged || hive.Query(key, L"Value7", value) == damaged);
    UseAll(m_file);
}

INSTANTIATE_TEST_SUITE_P(Changes, SchemaOfHiveTest,
                         ::testing::Values("drop table keys", "drop table \"values\"",
                                           "alter table keys rename column fold to other",
                                           "alter table \"values\" rename column data to other",
                                           "pragma application_id = 1"));

TEST_F(HiveTest, KeysThatGoRoundInACircleAreDeletedOnce)
{
    m_folder.File("settings.db", SampleHive(m_folder));
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(m_file.c_str(), &database), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(database,
                           "insert into keys values (70, 71, 'A', 'A'), (71, 70, 'B', 'B'), (72, 1, 'C', 'C')", nullptr,
                           nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(database);
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    EXPECT_EQ(hive.Find(70, L"B\\A\\B\\A\\B", key), 0);
    EXPECT_EQ(key, 71);
    EXPECT_EQ(hive.DeleteTree(70, L"B"), 0);
    EXPECT_EQ(hive.Find(70, L"B", key), deleted);
    EXPECT_EQ(hive.Find(Hive::root, L"C", key), 0);
}

TEST_F(HiveTest, DirectoryInItsPlaceIsAFailure)
{
    create_directory(m_file);
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    EXPECT_NE(hive.Find(Hive::root, L"Key", key), 0);
    EXPECT_NE(hive.FindOrCreate(Hive::root, L"Key", key), 0);
}

TEST_F(HiveTest, FileInPlaceOfItsFolderIsAFailure)
{
    Hive hive(m_folder.File("file", "x") / "settings.db", Hive::Owner::user);
    Hive::Key key = 0;
    EXPECT_EQ(hive.Find(Hive::root, L"Key", key), missing);
    EXPECT_NE(hive.FindOrCreate(Hive::root, L"Key", key), 0);
}

TEST_F(HiveTest, WithoutAFileNothingIsFoundAndNothingMade)
{
    Hive hive(path(), Hive::Owner::user);
    Hive::Key key = 0;
    EXPECT_EQ(hive.Find(Hive::root, L"Key", key), Status(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(hive.FindOrCreate(Hive::root, L"Key", key), Status(ERROR_PATH_NOT_FOUND));
}

TEST_F(HiveTest, FullDiskFailsTheWriteAndKeepsTheOldValue)
{
    Child child(
        [&]
        {
            Hive hive(m_file, Hive::Owner::user);
            const Hive::Key key = MakeKey(hive, L"Key");
            if (hive.Set(key, L"Name", REG_SZ, "old") != 0)
                return 1;
            // What a file may grow to stands for a disk that is full.
            ::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{65536, 65536};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            const LSTATUS status = hive.Set(key, L"Name", REG_BINARY, std::string(1000000, 'x'));
            if (status == 0 || Text(hive, key, L"Name") != "old")
                return 2;
            return hive.Set(key, L"Name", REG_SZ, "new") == 0 && Text(hive, key, L"Name") == "new" ? 0 : 3;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(HiveTest, FullDiskWhileItIsMadeLeavesNothing)
{
    Child child(
        [&]
        {
            ::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{8192, 8192};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            Hive hive(m_file, Hive::Owner::user);
            Hive::Key key = 0;
            return hive.FindOrCreate(Hive::root, L"Key", key) != 0 ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
    EXPECT_TRUE(is_empty(m_folder.Path()));
}

// Hives that belong to somebody else

class ForeignHiveTest : public HiveTest
{
protected:
    ForeignHiveTest()
    {
        Hive hive(m_file, Hive::Owner::machine);
        EXPECT_EQ(hive.Set(MakeKey(hive, L"Key"), L"Name", REG_SZ, "machine"), 0);
        hive.Close();
        Protect();
    }

    void Protect()
    {
        for (const char* const suffix : {"", "-wal", "-shm"})
            ::chmod((m_file.native() + suffix).c_str(), 0444);
    }

    /// Removes the log and its index, as one who closes a hive does.
    void LeaveAtRest()
    {
        for (const char* const suffix : {"-wal", "-shm"})
            boost::filesystem::remove(m_file.native() + suffix);
    }

    /// What somebody without rights reads there; 0 if it is `expected`.
    int ReadByNobody(const std::string& expected)
    {
        return AsNobody(m_folder,
                        [&]
                        {
                            Hive hive(m_file, Hive::Owner::machine);
                            Hive::Key key = 0;
                            if (hive.Find(Hive::root, L"Key", key) != 0)
                                return 1;
                            return Text(hive, key, L"Name") == expected ? 0 : 2;
                        });
    }
};

TEST_F(ForeignHiveTest, IsRead) { EXPECT_EQ(ReadByNobody("machine"), 0); }

TEST_F(ForeignHiveTest, IsReadWithoutTheFilesThatGoWithIt)
{
    LeaveAtRest();
    EXPECT_EQ(ReadByNobody("machine"), 0);
}

TEST_F(HiveTest, LogOfTheMachinesStaysForWhoMayOnlyReadItAndAUsersGoes)
{
    for (const auto owner : {Hive::Owner::user, Hive::Owner::machine})
    {
        Hive hive(m_file, owner);
        EXPECT_EQ(hive.Set(MakeKey(hive, L"Key"), L"Name", REG_SZ, "text"), 0);
        hive.Close();
        for (const char* const suffix : {"-wal", "-shm"})
            EXPECT_EQ(boost::filesystem::exists(m_file.native() + suffix), owner == Hive::Owner::machine) << suffix;
    }
}

TEST_F(ForeignHiveTest, IsReadInAFolderOfAnyName)
{
    const path folder = m_folder / "50% of #1?";
    create_directory(folder);
    const path file = folder / "settings.db";
    rename(m_file, file);
    EXPECT_EQ(AsNobody(m_folder,
                       [&]
                       {
                           Hive hive(file, Hive::Owner::machine);
                           Hive::Key key = 0;
                           if (hive.Find(Hive::root, L"Key", key) != 0)
                               return 1;
                           return Text(hive, key, L"Name") == "machine" ? 0 : 2;
                       }),
              0);
}

TEST_F(ForeignHiveTest, ThatWasAtRestIsReadAnewOnceItsOwnerWrites)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "The user lacks the right to become another";
    LeaveAtRest();
    ::chmod(m_folder.Path().c_str(), 0755);
    Child child(
        [&]
        {
            constexpr uid_t nobody = 65534;
            ::seteuid(nobody);
            Hive reader(m_file, Hive::Owner::machine);
            Hive::Key key = 0;
            if (reader.Find(Hive::root, L"Key", key) != 0 || Text(reader, key, L"Name") != "machine")
                return 1;
            ::seteuid(0);
            Hive owner(m_file, Hive::Owner::machine);
            if (owner.Set(key, L"Name", REG_SZ, "later") != 0)
                return 2;
            Protect();
            ::seteuid(nobody);
            return Text(reader, key, L"Name") == "later" ? 0 : 3;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(ForeignHiveTest, ThatAToolChangedAndTidiedUpIsReadAnew)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "The user lacks the right to become another";
    LeaveAtRest();
    ::chmod(m_folder.Path().c_str(), 0755);
    // It was changed long ago.
    boost::filesystem::last_write_time(m_file, std::time(nullptr) - 3600);
    Child child(
        [&]
        {
            constexpr uid_t nobody = 65534;
            Hive reader(m_file, Hive::Owner::machine);
            Hive::Key key = 0;
            ::seteuid(nobody);
            if (reader.Find(Hive::root, L"Key", key) != 0 || Text(reader, key, L"Name") != "machine")
                return 1;
            for (int i = 0; i < 300; ++i)
            {
                const std::string text = std::to_string(100 + i);
                ::seteuid(0);
                Execute(m_file, ("update \"values\" set data = cast('" + text + "' as blob)").c_str());
                if (HasFailure() || exists(path(m_file.native() + "-wal")))
                    return 2;
                ::seteuid(nobody);
                if (Text(reader, key, L"Name") != text)
                    return 3;
            }
            // Also where two changes have the same time.
            const std::time_t now = std::time(nullptr);
            for (const char* const text : {"one", "two", "six"})
            {
                ::seteuid(0);
                Execute(m_file, (std::string("update \"values\" set data = cast('") + text + "' as blob)").c_str());
                boost::filesystem::last_write_time(m_file, now);
                ::seteuid(nobody);
                if (Text(reader, key, L"Name") != text)
                    return 4;
            }
            return 0;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(ForeignHiveTest, IsReadWhileItsOwnerWrites)
{
    Hive owner(m_file, Hive::Owner::machine);
    Hive::Key key = 0;
    ASSERT_EQ(owner.Find(Hive::root, L"Key", key), 0);
    ASSERT_EQ(owner.Set(key, L"Name", REG_SZ, "later"), 0);
    Protect();
    EXPECT_EQ(ReadByNobody("later"), 0);
}

TEST_F(ForeignHiveTest, RefusesWrites)
{
    EXPECT_EQ(AsNobody(m_folder,
                       [&]
                       {
                           Hive hive(m_file, Hive::Owner::machine);
                           Hive::Key key = 0;
                           if (hive.Find(Hive::root, L"Key", key) != 0)
                               return 1;
                           Hive::Key made = 0;
                           if (hive.Writable() != denied || hive.Set(key, L"Name", REG_SZ, "mine") != denied ||
                               hive.DeleteValue(key, L"Name") != denied || hive.DeleteTree(key, L"") != denied ||
                               hive.FindOrCreate(Hive::root, L"New", made) != denied)
                               return 2;
                           // What exists can be had.
                           return hive.FindOrCreate(Hive::root, L"Key", made) == 0 && made == key ? 0 : 3;
                       }),
              0);
}

TEST_F(ForeignHiveTest, ThatMayNotBeReadIsDenied)
{
    ::chmod(m_file.c_str(), 0);
    EXPECT_EQ(AsNobody(m_folder,
                       [&]
                       {
                           Hive hive(m_file, Hive::Owner::machine);
                           Hive::Key key = 0;
                           return hive.Find(Hive::root, L"Key", key) == denied ? 0 : 1;
                       }),
              0);
}

TEST_F(ForeignHiveTest, FolderWithoutRightsIsDenied)
{
    EXPECT_EQ(AsNobody(m_folder,
                       [&]
                       {
                           Hive hive(m_folder / "other.db", Hive::Owner::machine);
                           Hive::Key key = 0;
                           return hive.FindOrCreate(Hive::root, L"Key", key) == denied ? 0 : 1;
                       }),
              0);
}

// Several at once

TEST_F(HiveTest, ProcessesThatMakeItAtOnceShareOne)
{
    std::vector<std::unique_ptr<Child>> children;
    for (std::uint32_t i = 0; i < 8; ++i)
        children.push_back(std::make_unique<Child>(
            [this, i]
            {
                Hive hive(m_file, Hive::Owner::user);
                return static_cast<int>(SetNumber(hive, MakeKey(hive, L"Shared"), L"Value" + std::to_wstring(i), i));
            }));
    for (const auto& each : children)
        EXPECT_EQ(each->ExitCode(), 0);
    Hive hive(m_file, Hive::Owner::user);
    utility::platform::RegistryKeyInfo info;
    ASSERT_EQ(hive.Info(MakeKey(hive, L"Shared"), info), 0);
    EXPECT_EQ(info.values, 8u);
}

TEST_F(HiveTest, ThatAnotherMadeMeanwhileIsSharedWithItsLog)
{
    const path other = m_folder / "other.db";
    Child killed(
        [&]
        {
            Hive hive(other, Hive::Owner::user);
            ::_exit(hive.Set(MakeKey(hive, L"Key"), L"Logged", REG_SZ, "logged"));
            return 0;
        });
    ASSERT_EQ(killed.ExitCode(), 0);
    const int folder = ::open(m_folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(folder, LOCK_EX), 0);
    Child late(
        [&]
        {
            Hive hive(m_file, Hive::Owner::user);
            return static_cast<int>(hive.Set(MakeKey(hive, L"Key"), L"Late", REG_SZ, "late"));
        });
    // Until it waits with what it has made.
    const auto isDraft = [](const auto& each) { return each.path().filename().native().starts_with("settings.db."); };
    while (std::count_if(boost::filesystem::directory_iterator(m_folder.Path()), {}, isDraft) == 0)
        ::usleep(1000);
    ::usleep(50'000);
    rename(path(other.native() + "-wal"), path(m_file.native() + "-wal"));
    rename(other, m_file);
    ::flock(folder, LOCK_UN);
    ::close(folder);
    EXPECT_EQ(late.ExitCode(), 0);
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    EXPECT_EQ(hive.Find(Hive::root, L"Key", key), 0);
    EXPECT_EQ(Text(hive, key, L"Logged"), "logged");
    EXPECT_EQ(Text(hive, key, L"Late"), "late");
}

TEST_F(HiveTest, OfOneCopyOfAProcessIsToldFromThatOfAnother)
{
    MakeKey(*std::make_unique<Hive>(m_folder / "first.db", Hive::Owner::user), L"Key");
    Hive hive(m_file, Hive::Owner::user);
    Hive::Key key = 0;
    for (std::uint32_t generation = 0; generation < 3; ++generation)
    {
        Child child(
            [&]
            {
                MakeKey(*std::make_unique<Hive>(m_folder / "new.db", Hive::Owner::user), L"Key");
                return 0;
            });
        EXPECT_EQ(child.ExitCode(), 0);
        // The bytes of the next come into the very file of the one before.
        hive.Close();
        m_folder.File("settings.db", TemporaryFolder::BytesOf(m_folder / "new.db"));
        boost::filesystem::remove(m_folder / "new.db");
        EXPECT_EQ(hive.Find(Hive::root, L"Key", key), 0);
        EXPECT_EQ(hive.Generation(), generation);
    }
}

TEST_F(HiveTest, ProcessesWriteAndReadAtOnce)
{
    { // made before, so that each finds the key
        Hive hive(m_file, Hive::Owner::user);
        MakeKey(hive, L"Key");
    }
    std::vector<std::unique_ptr<Child>> children;
    for (int process = 0; process < 4; ++process)
        children.push_back(std::make_unique<Child>(
            [this, process]
            {
                Hive hive(m_file, Hive::Owner::user);
                const Hive::Key key = MakeKey(hive, L"Key");
                const std::wstring name = L"Of" + std::to_wstring(process);
                for (int i = 0; i < 500; ++i)
                {
                    const std::string text = std::to_string(i);
                    if (hive.Set(key, name, REG_SZ, text) != 0 || Text(hive, key, name) != text)
                        return 1;
                }
                return 0;
            }));
    for (const auto& each : children)
        EXPECT_EQ(each->ExitCode(), 0);
}

TEST_F(HiveTest, KilledWriterLosesNothingThatWasAcknowledged)
{
    auto* const acknowledged = static_cast<std::atomic<std::uint32_t>*>(
        ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(acknowledged, MAP_FAILED);
    std::mt19937 random(3);
    for (int round = 0; round < 40; ++round)
    {
        const std::uint32_t before = acknowledged->load();
        const pid_t writer = ::fork();
        ASSERT_GE(writer, 0);
        if (writer == 0)
        {
            Hive hive(m_file, Hive::Owner::user);
            for (std::uint32_t number = before + 1;; ++number)
            {
                const Hive::Key key = MakeKey(hive, L"Key\\" + std::to_wstring(number % 50));
                if (SetNumber(hive, key, L"Name", number) == 0)
                    acknowledged->store(number);
            }
        }
        // In the midst of its work, but not before it has done some.
        for (int waited = 0; acknowledged->load() == before && waited < 20'000; ++waited)
            ::usleep(1000);
        ::usleep(static_cast<useconds_t>(random() % 10'000));
        ::kill(writer, SIGKILL);
        ::waitpid(writer, nullptr, 0);

        const std::uint32_t last = acknowledged->load();
        ASSERT_GT(last, before);
        Hive hive(m_file, Hive::Owner::user);
        Hive::Value value{};
        ASSERT_EQ(hive.Query(MakeKey(hive, L"Key\\" + std::to_wstring(last % 50)), L"Name", value), 0);
        std::uint32_t number = 0;
        std::memcpy(&number, value.data.data(), sizeof(number));
        // One that was under way when the writer died would be under another key.
        ASSERT_EQ(number, last) << "round " << round;
        sqlite3* database = nullptr;
        sqlite3_stmt* check = nullptr;
        ASSERT_EQ(sqlite3_open(m_file.c_str(), &database), SQLITE_OK);
        ASSERT_EQ(sqlite3_prepare_v2(database, "pragma integrity_check", -1, &check, nullptr), SQLITE_OK);
        ASSERT_EQ(sqlite3_step(check), SQLITE_ROW);
        ASSERT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(check, 0)), "ok");
        sqlite3_finalize(check);
        sqlite3_close(database);
    }
    ::munmap(acknowledged, 4096);
}

// The registry over two hives

/// Both hives in a folder of the test's own.
class HiveFilesTest : public ::testing::Test
{
protected:
    HiveFilesTest()
    {
        EXPECT_TRUE(SetHiveFile(HKEY_CURRENT_USER, m_folder / "user.db"));
        EXPECT_TRUE(SetHiveFile(HKEY_LOCAL_MACHINE, m_folder / "machine.db"));
    }
    ~HiveFilesTest() override
    {
        SetHiveFile(HKEY_CURRENT_USER, m_user);
        SetHiveFile(HKEY_LOCAL_MACHINE, m_machine);
    }

    HKEY Create(HKEY hive, const wchar_t* keys)
    {
        HKEY key = nullptr;
        EXPECT_EQ(Registry().RegCreateKeyW(hive, keys, key), 0);
        return key;
    }

    path m_user = HiveFile(HKEY_CURRENT_USER);
    path m_machine = HiveFile(HKEY_LOCAL_MACHINE);
    TemporaryFolder m_folder;
};

TEST_F(HiveFilesTest, AreWhereTheHostPutThem)
{
    EXPECT_EQ(HiveFile(HKEY_CURRENT_USER), m_folder / "user.db");
    EXPECT_EQ(HiveFile(HKEY_LOCAL_MACHINE), m_folder / "machine.db");
    Registry().RegCloseKey(Create(HKEY_CURRENT_USER, L"Key"));
    EXPECT_TRUE(exists(m_folder / "user.db"));
    EXPECT_FALSE(exists(m_folder / "machine.db"));
}

TEST_F(HiveFilesTest, MayBeNamedFromTheCurrentFolder)
{
    const path before = boost::filesystem::current_path();
    boost::filesystem::current_path(m_folder.Path());
    EXPECT_TRUE(SetHiveFile(HKEY_CURRENT_USER, "near.db"));
    boost::filesystem::current_path(before);
    EXPECT_EQ(HiveFile(HKEY_CURRENT_USER), m_folder / "near.db");
    Registry().RegCloseKey(Create(HKEY_CURRENT_USER, L"Key"));
    EXPECT_TRUE(exists(m_folder / "near.db"));
}

TEST_F(HiveFilesTest, NameWithANullCharacterIsRefusedAndNotThatOfTheFileAheadOfIt)
{
    const path before = HiveFile(HKEY_CURRENT_USER);
    EXPECT_FALSE(SetHiveFile(HKEY_CURRENT_USER, std::string("near.db\0", 8)));
    EXPECT_EQ(HiveFile(HKEY_CURRENT_USER), before);
}

TEST_F(HiveFilesTest, AreNamedInFullWhereThereIsNoCurrentFolder)
{
    Child child(
        [this]
        {
            create_directory(m_folder / "gone");
            boost::filesystem::current_path(m_folder / "gone");
            boost::filesystem::remove(m_folder / "gone");
            if (!SetHiveFile(HKEY_CURRENT_USER, m_folder / "full.db") ||
                HiveFile(HKEY_CURRENT_USER) != m_folder / "full.db")
                return 1;
            if (SetHiveFile(HKEY_CURRENT_USER, "near.db") || HiveFile(HKEY_CURRENT_USER) != m_folder / "full.db")
                return 2;
            return SetHiveFile(HKEY_CURRENT_USER, "") && HiveFile(HKEY_CURRENT_USER).empty() ? 0 : 3;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(HiveFilesTest, OfOtherKeysDoNotExist)
{
    HKEY key = Create(HKEY_CURRENT_USER, L"Key");
    EXPECT_FALSE(SetHiveFile(key, m_folder / "other.db"));
    EXPECT_FALSE(SetHiveFile(nullptr, m_folder / "other.db"));
    EXPECT_TRUE(HiveFile(key).empty());
    Registry().RegCloseKey(key);
}

TEST_F(HiveFilesTest, OnceMovedTheOldKeysAreDeleted)
{
    HKEY key = Create(HKEY_CURRENT_USER, L"Key");
    SetHiveFile(HKEY_CURRENT_USER, m_folder / "other.db");
    EXPECT_EQ(Registry().RegSetValueExW(key, L"Name", REG_SZ, nullptr, 0), deleted);
    EXPECT_EQ(Registry().RegCloseKey(key), 0);
    HKEY opened = nullptr;
    EXPECT_EQ(Registry().RegOpenKeyExW(HKEY_CURRENT_USER, L"Key", KEY_READ, opened), missing);
    SetHiveFile(HKEY_CURRENT_USER, m_folder / "user.db");
    EXPECT_EQ(Registry().RegOpenKeyExW(HKEY_CURRENT_USER, L"Key", KEY_READ, opened), 0);
    Registry().RegCloseKey(opened);
}

TEST_F(HiveFilesTest, ClosedKeyLeavesItsSlotToTheNextButNotItsHandle)
{
    HKEY closed = Create(HKEY_CURRENT_USER, L"Key");
    EXPECT_EQ(Registry().RegCloseKey(closed), 0);
    for (int i = 0; i < 100; ++i)
    {
        constexpr std::uintptr_t nextSerial = std::uintptr_t{1} << 32;
        HKEY next = reinterpret_cast<HKEY>(reinterpret_cast<std::uintptr_t>(closed) + nextSerial);
        EXPECT_EQ(Registry().RegCloseKey(next), Status(ERROR_INVALID_HANDLE));
        EXPECT_EQ(Create(HKEY_CURRENT_USER, L"Key"), next);
        EXPECT_EQ(Registry().RegCloseKey(closed), Status(ERROR_INVALID_HANDLE));
        EXPECT_EQ(Registry().RegCloseKey(next), 0);
        closed = next;
    }
}

TEST_F(HiveFilesTest, WritingAskedOfAForeignHiveIsDenied)
{
    Registry().RegCloseKey(Create(HKEY_LOCAL_MACHINE, L"Key"));
    ::chmod((m_folder / "machine.db").c_str(), 0444);
    EXPECT_EQ(AsNobody(m_folder,
                       []
                       {
                           HKEY key = nullptr;
                           if (Registry().RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Key", KEY_READ | KEY_WRITE, key) !=
                               denied)
                               return 1;
                           return Registry().RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Key", KEY_READ, key) == 0 ? 0 : 2;
                       }),
              0);
}

TEST_F(HiveFilesTest, KeysAreGoodOnBothSidesOfAFork)
{
    HKEY key = Create(HKEY_CURRENT_USER, L"Key");
    EXPECT_EQ(Registry().RegSetValueExW(key, L"Parent", REG_SZ, "p", 1), 0);
    for (int i = 0; i < 3; ++i)
    {
        Child child(
            [&]
            {
                if (Registry().RegQueryValueExW(key, L"Parent", nullptr, nullptr, nullptr) != 0)
                    return 1;
                return Registry().RegSetValueExW(key, L"Child", REG_SZ, "c", 1) == 0 ? 0 : 2;
            });
        EXPECT_EQ(Registry().RegSetValueExW(key, L"Parent", REG_SZ, "pp", 2), 0);
        EXPECT_EQ(child.ExitCode(), 0);
        EXPECT_EQ(Registry().RegQueryValueExW(key, L"Child", nullptr, nullptr, nullptr), 0);
    }
    Registry().RegCloseKey(key);
}

TEST_F(HiveFilesTest, DoNotKeepAForkWaitingForTheDisk)
{
    HKEY key = Create(HKEY_CURRENT_USER, L"Key");
    EXPECT_EQ(Registry().RegSetValueExW(key, L"Name", REG_SZ, "x", 1), 0);
    const std::string before = TemporaryFolder::BytesOf(m_folder / "user.db");
    Child child([&] { return static_cast<int>(Registry().RegQueryValueExW(key, L"Name", nullptr, nullptr, nullptr)); });
    EXPECT_EQ(child.ExitCode(), 0);
    // What is in the log stays there.
    EXPECT_TRUE(TemporaryFolder::BytesOf(m_folder / "user.db") == before);
    EXPECT_TRUE(exists(m_folder / "user.db-wal"));
    EXPECT_EQ(Registry().RegQueryValueExW(key, L"Name", nullptr, nullptr, nullptr), 0);
    Registry().RegCloseKey(key);
    // Later it comes into the file as ever.
    SetHiveFile(HKEY_CURRENT_USER, m_folder / "other.db");
    EXPECT_FALSE(exists(m_folder / "user.db-wal"));
    EXPECT_FALSE(TemporaryFolder::BytesOf(m_folder / "user.db") == before);
}

TEST_F(HiveFilesTest, KeyToBeReadIsRefusedSoonAndOneToBeWrittenWaitedForWhereThereIsNoLog)
{
    Registry().RegCloseKey(Create(HKEY_CURRENT_USER, L"Key"));
    Registry().Rest();
    Execute(m_folder / "user.db", withoutALog);
    OtherUser other(m_folder / "user.db", "begin exclusive", 1000);
    HKEY key = nullptr;
    const std::int64_t start = support::FailingDatabase::Slept();
    EXPECT_EQ(Registry().RegOpenKeyExW(HKEY_CURRENT_USER, L"Key", KEY_READ, key), Status(ERROR_BUSY));
    EXPECT_LT(support::FailingDatabase::Slept() - start, betweenReadersAndWriters);
    other.LetGo();
    EXPECT_EQ(Registry().RegOpenKeyExW(HKEY_CURRENT_USER, L"Key", KEY_WRITE, key), 0);
    EXPECT_EQ(Registry().RegCloseKey(key), 0);
}

TEST_F(HiveFilesTest, AreNotOpenInAChild)
{
    const auto countOpen = [this]
    {
        int count = 0;
        for (const auto& descriptor : boost::filesystem::directory_iterator("/proc/self/fd"))
        {
            boost::system::error_code gone;
            count += boost::filesystem::read_symlink(descriptor, gone).parent_path() == m_folder.Path() ? 1 : 0;
        }
        return count;
    };
    for (HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
    {
        Registry().RegCloseKey(Create(hive, L"Key"));
        EXPECT_GT(countOpen(), 0);
        Child child(countOpen);
        EXPECT_EQ(child.ExitCode(), 0);
    }
}

TEST_F(HiveFilesTest, ForkWhileOtherThreadsReadAndWriteEndsWell)
{
    HKEY key = Create(HKEY_CURRENT_USER, L"Key");
    std::atomic<bool> stop = false;
    std::atomic<int> failures = 0;
    std::thread busy(
        [&]
        {
            for (std::uint32_t i = 0; !stop; ++i)
            {
                if (Registry().RegSetValueExW(key, L"Busy", REG_DWORD, &i, sizeof(i)) != 0)
                    ++failures;
                // Nobody else would find the hive free, since nothing waits for a disk here.
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
        });
    for (std::uint32_t i = 0; i < 10; ++i)
    {
        Child child(
            [&]
            {
                return static_cast<int>(
                    Registry().RegSetValueExW(key, (L"Child" + std::to_wstring(i)).c_str(), REG_DWORD, &i, sizeof(i)));
            });
        EXPECT_EQ(child.ExitCode(), 0);
    }
    stop = true;
    busy.join();
    EXPECT_EQ(failures, 0);
    Registry().RegCloseKey(key);
}

TEST_F(HiveFilesTest, ThreadsShareThem)
{
    HKEY key = Create(HKEY_CURRENT_USER, L"Key");
    std::vector<std::thread> threads;
    std::atomic<int> failures = 0;
    for (std::uint32_t thread = 0; thread < 4; ++thread)
        threads.emplace_back(
            [&, thread]
            {
                const std::wstring name = L"Of" + std::to_wstring(thread);
                for (std::uint32_t i = 0; i < 200; ++i)
                {
                    HKEY own = nullptr;
                    std::uint32_t read = 0;
                    DWORD size = sizeof(read);
                    if (Registry().RegOpenKeyExW(HKEY_CURRENT_USER, L"Key", KEY_READ | KEY_WRITE, own) != 0 ||
                        Registry().RegSetValueExW(own, name.c_str(), REG_DWORD, &i, sizeof(i)) != 0 ||
                        Registry().RegQueryValueExW(key, name.c_str(), nullptr, &read, &size) != 0 || read != i ||
                        Registry().RegCloseKey(own) != 0)
                        ++failures;
                }
            });
    for (auto& each : threads)
        each.join();
    EXPECT_EQ(failures, 0);
    Registry().RegCloseKey(key);
}

}
