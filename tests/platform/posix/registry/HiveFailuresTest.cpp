#include "utility/platform/posix/registry/Hive.h"

#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/FailingDatabase.h"
#include "tests/support/posix/HiveContent.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/posix/registry/Status.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <sys/file.h>
#include <tuple>
#include <unistd.h>
#include <vector>

// What goes wrong below a hive: every operation is done with the first of the calls below it failing, then with the
// second, and so on until none is left to fail. Each time it has to be done or refused whole, and to leave nothing
// behind.

namespace
{

using boost::filesystem::path;
using support::ContentOf;
using support::FailingCall;
using support::FailingDatabase;
using support::TemporaryFolder;
using utility::platform::Registry;
using utility::platform::posix::Hive;
using utility::platform::posix::HiveOwner;
using utility::platform::posix::Status;
using Failure = FailingDatabase::Failure;
using Lasting = FailingDatabase::Lasting;

const LSTATUS busy = Status(ERROR_BUSY);
const LSTATUS full = Status(ERROR_DISK_FULL);
const LSTATUS inputOutput = Status(ERROR_REGISTRY_IO_FAILED);
const LSTATUS tooManyFiles = Status(ERROR_TOO_MANY_OPEN_FILES);
const LSTATUS memory = Status(ERROR_NOT_ENOUGH_MEMORY);

struct Operation
{
    const char* name;
    LSTATUS (*act)(Hive& hive, std::string& result);
    bool needsAHive = true;
};

/// Beside the root the sample has two keys, with numbers that are known.
constexpr Hive::Key key = 2;

const Operation operations[] = {
    {"Find",
     [](Hive& hive, std::string& result)
     {
         Hive::Key found = 0;
         const LSTATUS status = hive.Find(Hive::root, L"Key", found);
         result = std::to_string(found);
         return status;
     }},
    {"Query",
     [](Hive& hive, std::string& result)
     {
         Hive::Value value{};
         const LSTATUS status = hive.Query(key, L"Name", value);
         result = std::to_string(value.type).append(value.data);
         return status;
     }},
    {"SubKeyAt",
     [](Hive& hive, std::string& result)
     {
         std::wstring name;
         const LSTATUS status = hive.SubKeyAt(key, 0, name);
         result.assign(name.begin(), name.end());
         return status;
     }},
    {"ValueAt",
     [](Hive& hive, std::string& result)
     {
         std::wstring name;
         Hive::Value value{};
         const LSTATUS status = hive.ValueAt(key, 1, name, value);
         result.assign(name.begin(), name.end()).append(std::to_string(value.type)).append(value.data);
         return status;
     }},
    {"Info",
     [](Hive& hive, std::string& result)
     {
         utility::platform::RegistryKeyInfo info;
         const LSTATUS status = hive.Info(key, info);
         for (const DWORD each :
              {info.subKeys, info.longestSubKey, info.values, info.longestValueName, info.largestValue})
             result.append(std::to_string(each)).append(1, ' ');
         return status;
     }},
    {"FindOrCreateWhatIsThere",
     [](Hive& hive, std::string& result)
     {
         Hive::Key found = 0;
         const LSTATUS status = hive.FindOrCreate(Hive::root, L"Key", found);
         result = std::to_string(found);
         return status;
     }},
    {"FindOrCreateWhatIsNew",
     [](Hive& hive, std::string& result)
     {
         Hive::Key found = 0;
         const LSTATUS status = hive.FindOrCreate(key, L"New\\Newer", found);
         result = std::to_string(found);
         return status;
     }},
    {"FindOrCreateTheHive",
     [](Hive& hive, std::string& result)
     {
         Hive::Key found = 0;
         const LSTATUS status = hive.FindOrCreate(Hive::root, L"Key", found);
         result = std::to_string(found);
         return status;
     },
     false},
    {"SetWhatIsThere", [](Hive& hive, std::string&) { return hive.Set(key, L"Name", REG_SZ, "later"); }},
    {"SetWhatIsNew", [](Hive& hive, std::string&) { return hive.Set(key, L"New", REG_SZ, "new"); }},
    {"SetWhatIsLarge",
     [](Hive& hive, std::string&) { return hive.Set(key, L"Name", REG_BINARY, std::string(20000, 'x')); }},
    {"DeleteValue", [](Hive& hive, std::string&) { return hive.DeleteValue(key, L"Name"); }},
    {"DeleteTree", [](Hive& hive, std::string&) { return hive.DeleteTree(Hive::root, L"Key"); }},
};

const Operation writable{"Writable", [](Hive& hive, std::string&) { return hive.Writable(); }};

std::ostream& operator<<(std::ostream& out, const Operation& operation) { return out << operation.name; }

enum class Hives
{
    closed,
    open,
    ofTheMachine
};

class HiveTrials : public ::testing::Test
{
protected:
    HiveTrials(Operation operation, Hives state) : m_operation(operation), m_state(state)
    {
        {
            Hive hive(m_sample, HiveOwner::user);
            Hive::Key made = 0;
            EXPECT_EQ(hive.FindOrCreate(Hive::root, L"Key", made), 0);
            EXPECT_EQ(made, key);
            EXPECT_EQ(hive.Set(key, L"Name", REG_SZ, "text"), 0);
            EXPECT_EQ(hive.Set(key, L"Other", REG_SZ, "other"), 0);
            EXPECT_EQ(hive.FindOrCreate(key, L"Below", made), 0);
        }
        m_bytes = TemporaryFolder::BytesOf(m_sample);
        Prepare();
        m_before = ContentOf(m_file);
        EXPECT_EQ(m_operation.act(*std::make_unique<Hive>(m_file, HiveOwner::user), m_result), 0);
        m_after = ContentOf(m_file);
    }

    /// Does the operation with its first call failing, then with its second, until it has none that fails.
    template <class Failing, class... Arguments>
    void TryEach(const std::set<LSTATUS>& allowed, Arguments... arguments)
    {
        int at = 1;
        while (Try<Failing>(allowed, at, arguments...) && !HasFailure())
            ++at;
        EXPECT_FALSE(HasFailure()) << "call " << at;
    }

    const Operation m_operation;
    int m_refused = 0;

private:
    /// A new hive, as the operation finds it.
    void Prepare()
    {
        boost::filesystem::remove_all(m_file.parent_path());
        if (!m_operation.needsAHive)
            return;
        create_directory(m_file.parent_path());
        m_folder.File("hive/settings.db", m_bytes);
    }

    /// Whether the operation has so many calls.
    template <class Failing, class... Arguments>
    bool Try(const std::set<LSTATUS>& allowed, int at, Arguments... arguments)
    {
        Prepare();
        const std::ptrdiff_t descriptors = support::OpenDescriptors();
        bool hasFailed = false;
        {
            Hive hive(m_file, m_state == Hives::ofTheMachine ? HiveOwner::machine : HiveOwner::user);
            if (m_state == Hives::open)
                hive.Writable();
            std::string result;
            LSTATUS status = 0;
            {
                const Failing failing(arguments..., at);
                try
                {
                    status = m_operation.act(hive, result);
                }
                catch (const std::bad_alloc&)
                {
                    status = memory;
                }
                hasFailed = failing.HasFailed();
            }
            if (status == 0)
            {
                EXPECT_EQ(result, m_result);
                EXPECT_EQ(ContentOf(m_file), m_after);
            }
            else
            {
                EXPECT_TRUE(allowed.contains(status)) << status;
                const std::string content = ContentOf(m_file);
                // A hive without keys is whole too.
                EXPECT_TRUE(content == m_before || (!m_operation.needsAHive && content == "100|ok|1|null|||"))
                    << content;
                ++m_refused;
                // The next one goes through.
                result.clear();
                EXPECT_EQ(m_operation.act(hive, result), 0);
                EXPECT_EQ(result, m_result);
                EXPECT_EQ(ContentOf(m_file), m_after);
            }
            EXPECT_EQ(hive.Generation(), 0u);
        }
        EXPECT_EQ(support::OpenDescriptors(), descriptors);
        // A machine's hive keeps the files that go with it.
        EXPECT_EQ(std::distance(boost::filesystem::directory_iterator(m_file.parent_path()), {}),
                  m_state == Hives::ofTheMachine ? 3 : 1);
        return hasFailed;
    }

    const Hives m_state;
    const TemporaryFolder m_folder;
    const path m_sample = m_folder / "sample.db";
    const path m_file = m_folder / "hive/settings.db";
    std::string m_bytes;
    std::string m_before;
    std::string m_after;
    std::string m_result;
};

class FailingHiveTest : public HiveTrials, public ::testing::WithParamInterface<std::tuple<Operation, Failure, Hives>>
{
protected:
    FailingHiveTest() : HiveTrials(std::get<0>(GetParam()), std::get<2>(GetParam())) {}
};

TEST_P(FailingHiveTest, IsAsItWasOrAsItShouldBeWhicheverCallFails)
{
    const auto failure = std::get<1>(GetParam());
    const std::set<LSTATUS> allowed = failure == Failure::busy     ? std::set{busy}
                                      : failure == Failure::full   ? std::set{full}
                                      : failure == Failure::memory ? std::set{memory}
                                                                   : std::set{inputOutput, tooManyFiles};
    TryEach<FailingDatabase>(allowed, failure, Lasting::once);
    // A hive takes a thousand allocations to make, and is made anew for each.
    if (m_operation.needsAHive || failure != Failure::memory)
        TryEach<FailingDatabase>(allowed, failure, Lasting::forGood);
    // Not every operation waits for others or takes room on the disk.
    EXPECT_TRUE(m_refused > 0 || failure == Failure::busy || failure == Failure::full);
}

std::string NameOfTrial(const ::testing::TestParamInfo<FailingHiveTest::ParamType>& tested)
{
    const char* const failures[] = {"Busy", "Full", "InputOutput", "Memory"};
    const char* const states[] = {"Closed", "Open", "OfTheMachine"};
    const auto& [operation, failure, state] = tested.param;
    return std::string(operation.name) + failures[static_cast<int>(failure)] + states[static_cast<int>(state)];
}

const auto failures = ::testing::Values(Failure::busy, Failure::full, Failure::inputOutput, Failure::memory);

INSTANTIATE_TEST_SUITE_P(Operations, FailingHiveTest,
                         ::testing::Combine(::testing::ValuesIn(operations), failures, ::testing::Values(Hives::open)),
                         NameOfTrial);

INSTANTIATE_TEST_SUITE_P(Opening, FailingHiveTest,
                         ::testing::Combine(::testing::Values(writable, operations[0], operations[8]), failures,
                                            ::testing::Values(Hives::closed, Hives::ofTheMachine)),
                         NameOfTrial);

class HiveWithoutMemoryTest : public HiveTrials, public ::testing::WithParamInterface<Operation>
{
protected:
    HiveWithoutMemoryTest() : HiveTrials(GetParam(), Hives::open) {}
};

TEST_P(HiveWithoutMemoryTest, IsAsItWasOrAsItShouldBe) { TryEach<FailingCall>({memory}, "operator new", ENOMEM); }

INSTANTIATE_TEST_SUITE_P(Operations, HiveWithoutMemoryTest, ::testing::ValuesIn(operations),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(RegistryWithoutMemoryTest, GivesAKeyThatIsGoodOrNone)
{
    std::vector<HKEY> keys;
    bool fails = true;
    for (int at = 1; fails; ++at)
    {
        HKEY opened = nullptr;
        LSTATUS status = 0;
        {
            const FailingCall failing("operator new", ENOMEM, at);
            status = Registry().RegCreateKeyExW(HKEY_CURRENT_USER, L"Memory", KEY_READ | KEY_WRITE, opened);
            fails = failing.HasFailed();
        }
        EXPECT_TRUE(status == (opened != nullptr ? 0 : memory)) << at << ' ' << status;
        if (opened != nullptr)
            keys.push_back(opened);
    }
    EXPECT_EQ(std::set<HKEY>(keys.begin(), keys.end()).size(), keys.size());
    // Each is one of its own, and takes no memory to close.
    for (const HKEY each : keys)
    {
        EXPECT_EQ(Registry().RegSetValueExW(each, L"Name", REG_SZ, "x", 1), 0);
        const FailingCall failing("operator new", ENOMEM, FailingCall::always);
        EXPECT_EQ(Registry().RegCloseKey(each), 0);
        EXPECT_EQ(Registry().RegCloseKey(each), Status(ERROR_INVALID_HANDLE));
    }
}

// What a hive asks of the system itself

class HiveWithoutTest : public ::testing::Test
{
protected:
    /// The status of making a hive, which leaves nothing behind unless it is 0.
    LSTATUS Make(const path& file)
    {
        const std::ptrdiff_t descriptors = support::OpenDescriptors();
        Hive::Key made = 0;
        const LSTATUS status = Hive(file, HiveOwner::user).FindOrCreate(Hive::root, L"Key", made);
        EXPECT_EQ(support::OpenDescriptors(), descriptors);
        EXPECT_EQ(boost::filesystem::is_empty(m_folder.Path()), status != 0);
        return status;
    }
    LSTATUS Make() { return Make(m_file); }

    const TemporaryFolder m_folder;
    const path m_file = m_folder / "settings.db";
};

TEST_F(HiveWithoutTest, WhatItsMakingNeedsIsNotMade)
{
    for (const char* const call : {"getentropy", "open", "fsync"})
    {
        const FailingCall failing(call, EMFILE);
        const FailingCall closing("close", EIO);
        EXPECT_EQ(Make(), tooManyFiles) << call;
    }
    EXPECT_EQ(Make(), 0);
}

TEST_F(HiveWithoutTest, LinksIsMadeByRenaming)
{
    const FailingCall failing("link", EPERM);
    EXPECT_EQ(Make(), 0);
    EXPECT_TRUE(failing.HasFailed());
    EXPECT_EQ(ContentOf(m_file), "100|ok|1|null|||2|1|KEY|Key|");
}

TEST_F(HiveWithoutTest, LinksAndRenamingIsNotMade)
{
    {
        const FailingCall linking("link", EPERM);
        const FailingCall renaming("renameat2", EROFS);
        EXPECT_EQ(Make(), Status(ERROR_WRITE_PROTECT));
    }
    EXPECT_EQ(Make(), 0);
}

TEST_F(HiveWithoutTest, PatienceIsMadeAllTheSame)
{
    const FailingCall opening("open", EINTR);
    const FailingCall flushing("fsync", EINTR);
    EXPECT_EQ(Make(), 0);
    EXPECT_TRUE(opening.HasFailed());
    EXPECT_TRUE(flushing.HasFailed());
}

TEST_F(HiveWithoutTest, FlushOfItsFolderIsMadeAllTheSame)
{
    const FailingCall failing("fsync", EINVAL, 2);
    EXPECT_EQ(Make(), 0);
    EXPECT_TRUE(failing.HasFailed());
}

TEST_F(HiveWithoutTest, LocksOfFoldersIsMadeAllTheSame)
{
    const FailingCall failing("flock", ENOLCK);
    EXPECT_EQ(Make(), 0);
    EXPECT_TRUE(failing.HasFailed());
}

TEST_F(HiveWithoutTest, TurnAmongThoseThatAreMadeIsBusyAfterAWhile)
{
    const int folder = ::open(m_folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(folder, LOCK_SH), 0); // keeps out whoever wants to be alone
    {
        const FailingDatabase sleepless(Failure::busy, Lasting::once, std::numeric_limits<int>::max());
        EXPECT_EQ(Make(), busy);
    }
    ::close(folder);
    EXPECT_EQ(Make(), 0);
}

TEST_F(HiveWithoutTest, WayToMoveTheLogOfAnEarlierOneIsNotMade)
{
    const path log = m_folder.File("settings.db-wal", "log");
    {
        const FailingCall failing("rename", EIO, 2);
        Hive hive(m_file, HiveOwner::user);
        Hive::Key made = 0;
        EXPECT_EQ(hive.FindOrCreate(Hive::root, L"Key", made), Status(ERROR_GEN_FAILURE));
        EXPECT_TRUE(failing.HasFailed());
    }
    EXPECT_EQ(TemporaryFolder::BytesOf(log), "log");
    EXPECT_EQ(std::distance(boost::filesystem::directory_iterator(m_folder.Path()), {}), 1);
}

// What is set aside

class HiveToSetAsideTest : public ::testing::Test
{
protected:
    /// Opens a damaged hive, with a log beside it, while something fails: that what was there is there, whole, and that
    /// the next opens well. Whether it came to the failure.
    template <class Failing, class... Arguments>
    bool KeepsAll(Arguments... arguments)
    {
        for (const auto& each : boost::filesystem::directory_iterator(m_folder.Path()))
            remove(each.path());
        m_folder.File("settings.db", m_bytes);
        m_folder.File("settings.db-wal", m_log);
        const std::ptrdiff_t descriptors = support::OpenDescriptors();
        bool hasFailed = false;
        {
            Hive hive(m_file, HiveOwner::user);
            Hive::Key made = 0;
            const Failing failing(arguments...);
            try
            {
                m_status = hive.FindOrCreate(Hive::root, L"Key", made);
            }
            catch (const std::bad_alloc&)
            {
                m_status = memory;
            }
            hasFailed = failing.HasFailed();
        }
        EXPECT_EQ(support::OpenDescriptors(), descriptors);
        m_isWhereItWas = exists(m_file) && TemporaryFolder::BytesOf(m_file) == m_bytes;
        EXPECT_TRUE(Holds(m_bytes));
        EXPECT_TRUE(Holds(m_log));
        Hive next(m_file, HiveOwner::user);
        Hive::Key made = 0;
        EXPECT_EQ(next.FindOrCreate(Hive::root, L"Key", made), 0);
        EXPECT_TRUE(Holds(m_bytes));
        EXPECT_TRUE(Holds(m_log));
        return hasFailed;
    }

    bool Holds(const std::string& bytes) const
    {
        return std::ranges::any_of(boost::filesystem::directory_iterator(m_folder.Path()),
                                   boost::filesystem::directory_iterator(),
                                   [&](const auto& each) { return TemporaryFolder::BytesOf(each.path()) == bytes; });
    }

    const TemporaryFolder m_folder;
    const path m_file = m_folder / "settings.db";
    const std::string m_bytes = std::string(4096, 'x');
    const std::string m_log = "log";
    LSTATUS m_status = 0;
    bool m_isWhereItWas = false;
};

TEST_F(HiveToSetAsideTest, IsWhereItWasOrAsideWhicheverCallFails)
{
    for (const Failure failure : {Failure::busy, Failure::inputOutput, Failure::memory})
    {
        // All that is asked of it before it is set aside; its making has tests of its own.
        int at = 1;
        for (; at <= 60 && KeepsAll<FailingDatabase>(failure, Lasting::once, at) && !HasFailure(); ++at)
            ;
        EXPECT_FALSE(HasFailure()) << static_cast<int>(failure) << " at " << at;
    }
    for (int at = 1; KeepsAll<FailingCall>("operator new", ENOMEM, at) && !HasFailure(); ++at)
        ;
    for (const char* const call : {"link", "rename", "unlink", "renameat2"})
    {
        for (int at = 1; at < 5; ++at)
            KeepsAll<FailingCall>(call, EACCES, at);
    }
}

TEST_F(HiveToSetAsideTest, StaysWhereTheDiskTheMemoryOrAnotherFails)
{
    for (const Failure failure : {Failure::busy, Failure::inputOutput, Failure::memory})
    {
        EXPECT_TRUE(KeepsAll<FailingDatabase>(failure, Lasting::forGood, 1));
        EXPECT_TRUE(m_isWhereItWas) << static_cast<int>(failure);
        EXPECT_NE(m_status, 0);
    }
}

TEST_F(HiveToSetAsideTest, StaysWhereItsOtherNameDoesNotReachTheDisk)
{
    EXPECT_TRUE(KeepsAll<FailingCall>("fsync", EIO));
    EXPECT_TRUE(m_isWhereItWas);
    EXPECT_NE(m_status, 0);
}

TEST_F(HiveWithoutTest, ThatCannotBeReadIsNotTakenForADamagedOne)
{
    {
        Hive hive(m_file, HiveOwner::user);
        Hive::Key made = 0;
        ASSERT_EQ(hive.FindOrCreate(Hive::root, L"Key", made), 0);
    }
    const std::string whole = TemporaryFolder::BytesOf(m_file);
    for (const auto lasting : {Lasting::once, Lasting::forGood})
    {
        int at = 1;
        for (bool hasFailed = true; hasFailed; ++at)
        {
            Hive hive(m_file, HiveOwner::user);
            Hive::Key found = 0;
            const FailingDatabase failing(Failure::lostBytes, lasting, at);
            EXPECT_NE(hive.Find(Hive::root, L"Key", found), Status(ERROR_FILE_NOT_FOUND)) << at;
            hasFailed = failing.HasFailed();
            hive.Close();
            EXPECT_EQ(TemporaryFolder::BytesOf(m_file), whole) << at;
        }
        EXPECT_GT(at, 2);
    }
}

TEST_F(HiveWithoutTest, AnswerOfTheSystemIsNoMissingOne)
{
    {
        const FailingCall failing("stat", EIO);
        Hive hive(m_file, HiveOwner::user);
        Hive::Key found = 0;
        EXPECT_EQ(hive.Find(Hive::root, L"Key", found), Status(ERROR_GEN_FAILURE));
        EXPECT_TRUE(failing.HasFailed());
    }
    EXPECT_EQ(Make(), 0);
}

TEST_F(HiveWithoutTest, ShortPathIsNotMade)
{
    path folder = m_folder.Path();
    for (int i = 0; i < 4; ++i)
        folder /= std::string(200, 'f');
    create_directories(folder);
    Hive hive(folder / "settings.db", HiveOwner::user);
    Hive::Key made = 0;
    EXPECT_EQ(hive.FindOrCreate(Hive::root, L"Key", made), inputOutput);
    EXPECT_TRUE(is_empty(folder));
}

}
