#include "utility/files/BackupFile.h"

#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/PathsWithoutLocale.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/MemoryMappedFile.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>
#include <type_traits>

using boost::filesystem::filesystem_error;
using Calls = std::vector<std::string>;

static_assert(!std::is_polymorphic_v<CBackupFile>);
static_assert(!std::is_nothrow_destructible_v<CBackupFile>);

namespace
{

class BackupFileTest : public ::testing::Test
{
protected:
    std::string Bytes() const { return support::TemporaryFolder::BytesOf(m_file); }

    /// The number of entries in the folder.
    std::ptrdiff_t Entries() const { return std::distance(boost::filesystem::directory_iterator(m_folder.Path()), {}); }

    /// The path of the entry that is neither the file nor this one.
    boost::filesystem::path Other(const boost::filesystem::path& known) const
    {
        for (const boost::filesystem::directory_entry& each : boost::filesystem::directory_iterator(m_folder.Path()))
        {
            if (each.path() != m_file && each.path() != known)
                return each.path();
        }
        return {};
    }

    /// Saves "new", and ends the object.
    void Save() const
    {
        CBackupFile backup(m_file);
        m_folder.File(backup.GetTempFilename().filename().string().c_str(), "new");
        backup.SetReplaceFile(true);
    }

    /// Has the swap end with nothing to put in the old file's place.
    void SaveNothing() const
    {
        CBackupFile backup(m_file);
        backup.SetReplaceFile(true);
    }

    const support::TemporaryFolder m_folder;
    const boost::filesystem::path m_file = m_folder.File("part.nc", "old");
};

/// With a service whose swap is refused.
class RefusedSwapTest : public BackupFileTest
{
protected:
    RefusedSwapTest() { m_system.failing = {"Replace"}; }

    support::ForwardingFileSystem m_system;
};

}

TEST_F(BackupFileTest, NewVersionHasANameOfItsOwnBesideTheFile)
{
    const CBackupFile one(m_file);
    const CBackupFile other(m_file);
    EXPECT_EQ(one.GetFilename(), m_file);
    EXPECT_EQ(one.GetTempFilename().parent_path(), m_folder.Path());
    const std::regex form("MS[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}");
    EXPECT_TRUE(std::regex_match(one.GetTempFilename().filename().string(), form)) << one.GetTempFilename();
    EXPECT_NE(one.GetTempFilename(), other.GetTempFilename());
    EXPECT_EQ(CBackupFile(L"part.nc").GetTempFilename().parent_path(), "");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(BackupFileTest, FileIsNamedByWideTextOrAPathWhateverTheLocale)
{
    const std::wstring name = utility::platform::WideFromPath(m_folder / "x") + L"Frästeil \u00E4\u65E5";
    const support::PathsWithoutLocale unconverted;
    EXPECT_EQ(CBackupFile(name).GetFilename(), utility::platform::PathFromWide(name.c_str()));
    EXPECT_EQ(CBackupFile(name.c_str()).GetTempFilename().parent_path(), m_folder.Path());
}

TEST_F(BackupFileTest, WithoutAWordTheNewVersionIsRemovedAndTheOldOneStays)
{
    {
        const CBackupFile backup(m_file);
        m_folder.File(backup.GetTempFilename().filename().string().c_str(), "new");
        EXPECT_EQ(Entries(), 2);
    }
    EXPECT_EQ(Bytes(), "old");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(BackupFileTest, NewVersionThatWasNeverWrittenIsNoFailure)
{
    EXPECT_NO_THROW(CBackupFile{m_file});
    EXPECT_EQ(Bytes(), "old");
}

TEST_F(BackupFileTest, NewVersionThatCannotBeRemovedIsToldByTheDestructor)
{
    const auto end = [&]
    {
        const CBackupFile backup(m_file);
        create_directory(backup.GetTempFilename());
        create_directory(backup.GetTempFilename() / "within");
    };
    EXPECT_THROW(end(), filesystem_error);
    EXPECT_EQ(Bytes(), "old");
}

TEST_F(BackupFileTest, NewVersionThatCannotBeRemovedDoesNotHideTheFailureBeforeIt)
{
    const auto save = [&]
    {
        const CBackupFile backup(m_file);
        create_directory(backup.GetTempFilename());
        create_directory(backup.GetTempFilename() / "within");
        throw std::runtime_error("no more");
    };
    EXPECT_THROW(save(), std::runtime_error);
    EXPECT_EQ(Bytes(), "old");
}

TEST_F(BackupFileTest, FolderWithANullCharacterInItsNameIsNotTakenForTheFileAheadOfIt)
{
    boost::filesystem::path folder = m_file;
    folder += boost::filesystem::path::string_type(1, '\0');
    EXPECT_NO_THROW(CBackupFile{folder / "x"});
    EXPECT_EQ(Bytes(), "old");
}

TEST_F(BackupFileTest, NewVersionTakesThePlaceOfTheOldOneAndNothingElseRemains)
{
    Save();
    EXPECT_EQ(Bytes(), "new");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(BackupFileTest, FileThatDidNotExistIsThereAfterwards)
{
    remove(m_file);
    Save();
    EXPECT_EQ(Bytes(), "new");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(BackupFileTest, WordMayBeTakenBack)
{
    {
        CBackupFile backup(m_file);
        m_folder.File(backup.GetTempFilename().filename().string().c_str(), "new");
        backup.SetReplaceFile(true);
        backup.SetReplaceFile(false);
    }
    EXPECT_EQ(Bytes(), "old");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(BackupFileTest, ObjectWithTwoEqualNamesReplacesNothing)
{
    support::ForwardingFileSystem system;
    {
        CBackupFile backup(m_file);
        const_cast<boost::filesystem::path&>(backup.GetTempFilename()) = m_folder / "missing";
        const_cast<boost::filesystem::path&>(backup.GetFilename()) = m_folder / "missing";
        backup.SetReplaceFile(true);
    }
    EXPECT_EQ(system.calls, Calls{});
}

TEST_F(BackupFileTest, SaveThatThrowsLeavesTheOldVersionAlone)
{
    const auto save = [&]
    {
        CBackupFile backup(m_file);
        CMemoryMappedFile file(backup.GetTempFilename(), 0);
        file.WriteFile("ne", 2);
        throw std::runtime_error("no more");
    };
    EXPECT_THROW(save(), std::runtime_error);
    EXPECT_EQ(Bytes(), "old");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(BackupFileTest, CopyHasTheNamesAndWhetherToReplace)
{
    {
        CBackupFile backup(m_file);
        m_folder.File(backup.GetTempFilename().filename().string().c_str(), "new");
        CBackupFile copy(backup);
        EXPECT_EQ(copy.GetFilename(), backup.GetFilename());
        EXPECT_EQ(copy.GetTempFilename(), backup.GetTempFilename());
        CBackupFile assigned(m_folder / "other");
        backup.SetReplaceFile(true);
        assigned = backup;
        EXPECT_EQ(assigned.GetTempFilename(), backup.GetTempFilename());
        backup.SetReplaceFile(false);
        const_cast<boost::filesystem::path&>(backup.GetTempFilename()) = m_folder / "missing";
        const_cast<boost::filesystem::path&>(copy.GetTempFilename()) = m_folder / "missing";
    }
    EXPECT_EQ(Bytes(), "new");
}

TEST_F(BackupFileTest, ReaderKeepsTheOldVersionAndNothingRemainsBehindIt)
{
    {
        const CMemoryMappedFile reader(m_file);
        Save();
        EXPECT_EQ(std::string(static_cast<const char*>(reader.GetBase()), 3), "old");
        EXPECT_EQ(Bytes(), "new");
    }
    EXPECT_EQ(Entries(), 1);
}

TEST_F(BackupFileTest, FolderIsNotReplacedAndTheDestructorSaysSo)
{
    remove(m_file);
    create_directory(m_file);
    m_folder.File("part.nc/within", "bytes");
    EXPECT_THROW(Save(), filesystem_error);
    EXPECT_EQ(m_folder.BytesOf(m_file / "within"), "bytes");
}

TEST_F(BackupFileTest, EmptyFolderIsNotReplacedEither)
{
    remove(m_file);
    create_directory(m_file);
    EXPECT_THROW(Save(), filesystem_error);
    EXPECT_TRUE(is_directory(m_file));
}

TEST_F(BackupFileTest, NameWithANullCharacterIsToldAndTheFileAheadOfItStays)
{
    boost::filesystem::path name = m_file;
    name += boost::filesystem::path(std::string("\0c", 2));
    const auto save = [this](auto named)
    {
        CBackupFile backup(named);
        m_folder.File(backup.GetTempFilename().filename().string().c_str(), "new");
        backup.SetReplaceFile(true);
    };
    EXPECT_THROW(save(name), filesystem_error);
    EXPECT_THROW(save(utility::platform::WideFromPath(name)), filesystem_error);
    EXPECT_EQ(Bytes(), "old");
}

TEST_F(BackupFileTest, NewVersionThatIsMissingIsToldAndTheOldOneStays)
{
    EXPECT_THROW(SaveNothing(), filesystem_error);
    EXPECT_EQ(Bytes(), "old");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(BackupFileTest, NameOf255BytesIsReplacedToo)
{
    const boost::filesystem::path file = m_folder.File(std::string(255, 'x').c_str(), "old");
    ASSERT_TRUE(exists(file));
    {
        CBackupFile backup(file);
        m_folder.File(backup.GetTempFilename().filename().string().c_str(), "new");
        backup.SetReplaceFile(true);
    }
    EXPECT_EQ(m_folder.BytesOf(file), "new");
}

TEST_F(RefusedSwapTest, NewVersionIsRenamedThenAndItsNameFlushed)
{
    for (const DWORD reason : {ERROR_SHARING_VIOLATION, ERROR_UNABLE_TO_REMOVE_REPLACED, ERROR_ACCESS_DENIED,
                               ERROR_UNABLE_TO_MOVE_REPLACEMENT, ERROR_SUCCESS})
    {
        m_system.error = static_cast<DWORD>(reason);
        m_system.calls.clear();
        m_folder.File("part.nc", "old");
        Save();
        EXPECT_EQ(Bytes(), "new");
        EXPECT_EQ(Entries(), 1);
        EXPECT_EQ(m_system.calls, (Calls{"Replace", "FlushName"}));
    }
}

TEST_F(RefusedSwapTest, OldVersionIsRemovedFirstForThreeReasonsOnly)
{
    for (const DWORD reason : {ERROR_FILE_NOT_FOUND, ERROR_SHARING_VIOLATION, ERROR_UNABLE_TO_REMOVE_REPLACED})
    {
        m_system.error = static_cast<DWORD>(reason);
        EXPECT_THROW(SaveNothing(), filesystem_error);
        EXPECT_EQ(Bytes(), "old") << reason;
    }
    for (const DWORD reason : {ERROR_UNABLE_TO_MOVE_REPLACEMENT, ERROR_ACCESS_DENIED, ERROR_SUCCESS})
    {
        m_system.error = static_cast<DWORD>(reason);
        m_folder.File("part.nc", "old");
        EXPECT_THROW(SaveNothing(), filesystem_error);
        EXPECT_FALSE(exists(m_file)) << reason;
    }
}

TEST_F(RefusedSwapTest, OldVersionThatIsNotThereIsNotInTheWay)
{
    m_system.error = ERROR_ACCESS_DENIED;
    remove(m_file);
    Save();
    EXPECT_EQ(Bytes(), "new");
}

TEST_F(RefusedSwapTest, WhatCannotBeRemovedIsMovedOutOfTheWayAndDeletedWhenUnused)
{
    // A folder with something in it cannot be removed. Something has the backup's name already.
    struct : support::ForwardingFileSystem
    {
        bool Replace(const path&, const path&, const path& backup) override
        {
            std::ofstream(backup.string()) << "in the way";
            utility::platform::SetLastError(ERROR_ACCESS_DENIED);
            return false;
        }
        bool DeleteWhenUnused(const path& file) override
        {
            deleted = file;
            return true;
        }
        path deleted;
    } system;
    remove(m_file);
    create_directory(m_file);
    m_folder.File("part.nc/within", "bytes");
    Save();
    EXPECT_EQ(Bytes(), "new");
    EXPECT_EQ(Other({}), system.deleted);
    EXPECT_EQ(m_folder.BytesOf(system.deleted / "within"), "bytes");
}

TEST_F(RefusedSwapTest, NameThatIsNotFlushedIsTold)
{
    m_system.failing.emplace_back("FlushName");
    m_system.error = ERROR_SHARING_VIOLATION;
    EXPECT_THROW(Save(), filesystem_error);
    EXPECT_EQ(Bytes(), "new");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(RefusedSwapTest, BackupThatCanBeRemovedIsNotAskedToGoLater)
{
    m_system.failing.clear();
    Save();
    EXPECT_EQ(m_system.calls, Calls{"Replace"});
}
