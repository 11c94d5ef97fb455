#include "utility/platform/FileSystem.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/MemoryMappedFile.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <pwd.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using boost::filesystem::path;
using support::FailingCall;
using utility::platform::FileSystem;
using utility::platform::LastError;

namespace
{

/// A folder on another device than that of temporary files.
class OtherDevice
{
public:
    OtherDevice() : m_path("/dev/shm" / boost::filesystem::unique_path("utility-%%%%%%%%%%%%"))
    {
        boost::system::error_code failure;
        create_directory(m_path, failure);
        m_isThere = !failure && Device(m_path) != Device(boost::filesystem::temp_directory_path());
    }
    OtherDevice(const OtherDevice&) = delete;
    OtherDevice& operator=(const OtherDevice&) = delete;
    ~OtherDevice()
    {
        boost::system::error_code ignored;
        remove_all(m_path, ignored);
    }

    bool IsThere() const { return m_isThere; }
    const path& Path() const { return m_path; }

private:
    static dev_t Device(const path& file)
    {
        struct stat status = {};
        ::stat(file.c_str(), &status);
        return status.st_dev;
    }

    path m_path;
    bool m_isThere = false;
};

std::ptrdiff_t EntriesOf(const path& folder)
{
    return std::distance(boost::filesystem::directory_iterator(folder), {});
}

struct stat StatusOf(const path& file)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(file.c_str(), &status), 0) << file;
    return status;
}

std::string Attribute(const path& file, const char* name)
{
    char bytes[64];
    const ssize_t size = ::getxattr(file.c_str(), name, bytes, sizeof(bytes));
    return size < 0 ? "none" : std::string(bytes, static_cast<std::size_t>(size));
}

bool SetAttribute(const path& file, const char* name, const std::string& value)
{
    return ::setxattr(file.c_str(), name, value.data(), value.size(), 0) == 0;
}

/// The access list of user::rw-, user:1:rw-, group::r--, mask::rw-, other::---.
std::string AccessList()
{
    using namespace std::string_literals;
    const std::string none(4, '\xFF');
    return "\2\0\0\0"s + "\1\0\6\0"s + none + "\2\0\6\0\1\0\0\0"s + "\4\0\4\0"s + none + "\x10\0\6\0"s + none +
           "\x20\0\0\0"s + none;
}

class PosixSwapTest : public ::testing::Test
{
protected:
    ~PosixSwapTest() override { EXPECT_LE(support::OpenDescriptors(), m_descriptors); }

    bool Swap() const { return FileSystem().Replace(m_target, m_replacement, m_backup); }

    static std::string Bytes(const path& file) { return support::TemporaryFolder::BytesOf(file); }

    const support::TemporaryFolder m_folder;
    const path m_target = m_folder.File("target", "old");
    const path m_replacement = m_folder.File("replacement", "new");
    const path m_backup = m_folder / "backup";
    const std::ptrdiff_t m_descriptors = support::OpenDescriptors();
};

}

TEST_F(PosixSwapTest, PermissionsGoOver)
{
    for (const mode_t mode : {0600U, 0444U, 04755U, 0000U})
    {
        m_folder.File("replacement", "new");
        ASSERT_EQ(::chmod(m_target.c_str(), mode), 0);
        ASSERT_TRUE(Swap());
        EXPECT_EQ(StatusOf(m_target).st_mode & 07777U, mode);
    }
}

TEST_F(PosixSwapTest, OwnerAndGroupGoOverWhereTheUserMayGiveFilesAway)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "The user lacks the right to give files away";
    ASSERT_EQ(::chown(m_target.c_str(), 1, 2), 0);
    ASSERT_EQ(::chmod(m_target.c_str(), 06755), 0);
    ASSERT_TRUE(Swap());
    EXPECT_EQ(StatusOf(m_target).st_uid, 1u);
    EXPECT_EQ(StatusOf(m_target).st_gid, 2u);
    EXPECT_EQ(StatusOf(m_target).st_mode & 07777U, 06755u);
}

TEST_F(PosixSwapTest, GroupThatCannotGoOverLeavesOthersNoMoreThanTheyHad)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "The user lacks the right to give files away";
    support::Child child(
        [&]
        {
            // A file of somebody else's, in a folder where all may do anything.
            ::chmod(m_folder.Path().c_str(), 0777);
            ::chown(m_target.c_str(), 1, 2);
            ::chmod(m_target.c_str(), 06764);
            ::chown(m_replacement.c_str(), 3, 3);
            if (::setgid(3) != 0 || ::setuid(3) != 0 || !Swap())
                return 1;
            const struct stat status = StatusOf(m_target);
            return status.st_uid == 3 && status.st_gid == 3 && (status.st_mode & 07777U) == 0744 ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
    EXPECT_EQ(Bytes(m_target), "new");
    EXPECT_FALSE(exists(m_replacement));
}

TEST_F(PosixSwapTest, GroupGoesOverWithoutTheOwnerToAMemberOfIt)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "The user lacks the right to give files away";
    support::Child child(
        [&]
        {
            ::chmod(m_folder.Path().c_str(), 0777);
            ::chown(m_target.c_str(), 1, 3);
            ::chmod(m_target.c_str(), 0660);
            ::chown(m_replacement.c_str(), 3, 0);
            if (::setgid(3) != 0 || ::setuid(3) != 0 || !Swap())
                return 1;
            const struct stat status = StatusOf(m_target);
            return status.st_uid == 3 && status.st_gid == 3 && (status.st_mode & 07777U) == 0660 ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixSwapTest, ExtendedAttributesGoOverEmptyOnesToo)
{
    if (!SetAttribute(m_target, "user.kept", "old"))
        GTEST_SKIP() << "The file system has no extended attributes";
    SetAttribute(m_target, "user.empty", "");
    SetAttribute(m_replacement, "user.kept", "new");
    SetAttribute(m_replacement, "user.own", "own");
    ASSERT_TRUE(Swap());
    EXPECT_EQ(Attribute(m_target, "user.kept"), "old");
    EXPECT_EQ(Attribute(m_target, "user.empty"), "");
    EXPECT_EQ(Attribute(m_target, "user.own"), "own");
}

TEST_F(PosixSwapTest, AccessListGoesOver)
{
    if (!SetAttribute(m_target, "system.posix_acl_access", AccessList()))
        GTEST_SKIP() << "The file system has no access lists";
    ASSERT_TRUE(Swap());
    EXPECT_EQ(Attribute(m_target, "system.posix_acl_access"), AccessList());
    EXPECT_EQ(StatusOf(m_target).st_mode & 0777U, 0660u);
}

TEST_F(PosixSwapTest, AccessListThatTheFolderGaveTheNewFileDoesNotStay)
{
    ASSERT_EQ(::chmod(m_target.c_str(), 0660), 0);
    if (!SetAttribute(m_replacement, "system.posix_acl_access", AccessList()))
        GTEST_SKIP() << "The file system has no access lists";
    ASSERT_TRUE(Swap());
    EXPECT_EQ(Attribute(m_target, "system.posix_acl_access"), "none");
    EXPECT_EQ(StatusOf(m_target).st_mode & 0777U, 0660u);
}

TEST_F(PosixSwapTest, LinkStaysALinkAndWhatItPointsAtIsReplaced)
{
    const support::TemporaryFolder other;
    const path real = other.File("real", "old");
    create_symlink(real, m_folder / "far");
    create_symlink("far", m_folder / "link");
    ASSERT_TRUE(FileSystem().Replace(m_folder / "link", m_replacement, m_backup)) << LastError();
    EXPECT_TRUE(is_symlink(m_folder / "link"));
    EXPECT_TRUE(is_symlink(m_folder / "far"));
    EXPECT_EQ(Bytes(real), "new");
    EXPECT_FALSE(is_symlink(real));
    EXPECT_EQ(Bytes(m_backup), "old");
    EXPECT_EQ(EntriesOf(other.Path()), 1);
}

TEST_F(PosixSwapTest, LinkThatLeadsNowhereIsAMissingTarget)
{
    create_symlink("nothing", m_folder / "dangling");
    create_symlink("loop", m_folder / "loop");
    for (const char* const link : {"dangling", "loop"})
    {
        EXPECT_FALSE(FileSystem().Replace(m_folder / link, m_replacement, m_backup));
        EXPECT_EQ(LastError(), 2u);
        EXPECT_TRUE(is_symlink(m_folder / link));
    }
}

TEST_F(PosixSwapTest, LinkToAnotherDeviceIsFollowedThere)
{
    const OtherDevice other;
    if (!other.IsThere())
        GTEST_SKIP() << "There is no second device to write to";
    rename(m_target, m_folder / "moved");
    std::ofstream((other.Path() / "real").native()) << "old";
    ASSERT_EQ(::chmod((other.Path() / "real").c_str(), 0640), 0);
    create_symlink(other.Path() / "real", m_target);
    const support::ShortWrites two(2); // the copy is written in parts
    ASSERT_TRUE(Swap()) << LastError();
    EXPECT_TRUE(is_symlink(m_target));
    EXPECT_EQ(Bytes(other.Path() / "real"), "new");
    EXPECT_EQ(StatusOf(other.Path() / "real").st_mode & 0777U, 0640u);
    EXPECT_EQ(EntriesOf(other.Path()), 1);
    EXPECT_FALSE(exists(m_replacement));
    EXPECT_FALSE(exists(m_backup));
}

TEST_F(PosixSwapTest, LinkToAnotherDeviceIsLeftAsItIsWhereTheCopyFails)
{
    const OtherDevice other;
    if (!other.IsThere())
        GTEST_SKIP() << "There is no second device to write to";
    rename(m_target, m_folder / "moved");
    std::ofstream((other.Path() / "real").native()) << "old";
    create_symlink(other.Path() / "real", m_target);
    {
        const FailingCall failing("rename", EIO);
        EXPECT_FALSE(Swap());
        EXPECT_EQ(LastError(), 1175u);
        EXPECT_EQ(Bytes(m_replacement), "new");
    }
    {
        const FailingCall failing("fsync", EIO);
        EXPECT_FALSE(Swap());
        EXPECT_FALSE(exists(m_replacement));
    }
    EXPECT_EQ(Bytes(other.Path() / "real"), "old");
    EXPECT_EQ(EntriesOf(other.Path()), 1);
    EXPECT_TRUE(is_symlink(m_target));
}

TEST_F(PosixSwapTest, FileSystemWithoutSecondNamesExchangesTheTwo)
{
    const FailingCall failing("link", EPERM);
    ASSERT_TRUE(Swap());
    EXPECT_EQ(Bytes(m_target), "new");
    EXPECT_EQ(Bytes(m_backup), "old");
    EXPECT_FALSE(exists(m_replacement));
}

TEST_F(PosixSwapTest, ExchangedFileThatCannotBeRenamedGoes)
{
    const FailingCall failing("link", EPERM);
    const FailingCall alsoFailing("rename", EIO);
    ASSERT_TRUE(Swap());
    EXPECT_EQ(Bytes(m_target), "new");
    EXPECT_EQ(EntriesOf(m_folder.Path()), 1);
}

TEST_F(PosixSwapTest, FileSystemWithNeitherRefusesAndChangesNothing)
{
    const FailingCall failing("link", EPERM);
    const FailingCall alsoFailing("renameat2", EINVAL);
    EXPECT_FALSE(Swap());
    EXPECT_EQ(LastError(), 1175u);
    EXPECT_EQ(Bytes(m_target), "old");
    EXPECT_EQ(Bytes(m_replacement), "new");
    EXPECT_FALSE(exists(m_backup));
}

TEST_F(PosixSwapTest, RefusalOfAnyCallIs1175AndChangesNothing)
{
    for (const char* const call : {"lstat", "open", "rename"})
    {
        for (const int error : {EIO, ENOSPC, EACCES, EPERM, EROFS})
        {
            const FailingCall failing(call, error);
            EXPECT_FALSE(Swap()) << call;
            EXPECT_EQ(LastError(), 1175u) << call << error;
            EXPECT_EQ(Bytes(m_target), "old");
            EXPECT_EQ(Bytes(m_replacement), "new");
            EXPECT_FALSE(exists(m_backup)) << call;
        }
    }
}

TEST_F(PosixSwapTest, NewFileThatIsNotFlushedGoesAndTheOldOneStays)
{
    // Of the file, and of the folder that its name is in; and the folder may not be opened.
    const struct
    {
        const char* call;
        int at;
    } flushes[] = {{"fsync", 1}, {"fsync", 2}, {"open", 2}};
    for (const auto& flush : flushes)
    {
        m_folder.File("replacement", "new");
        const FailingCall failing(flush.call, EIO, flush.at);
        EXPECT_FALSE(Swap());
        EXPECT_EQ(LastError(), 1175u);
        EXPECT_EQ(Bytes(m_target), "old");
        EXPECT_EQ(EntriesOf(m_folder.Path()), 1);
    }
}

TEST_F(PosixSwapTest, NewFileThatTheLibraryHasJustFlushedIsFlushedOnlyIfItHasChanged)
{
    const auto write = [this](const char* name, const std::string& bytes)
    {
        CMemoryMappedFile file(m_folder / name, 0);
        file.WriteFile(bytes.data(), bytes.size());
        file.CommitAndClose();
    };
    const auto flushes = [this]
    {
        const FailingCall failing("fsync", EIO, 2);
        const bool isSwapped = Swap();
        return isSwapped && !failing.HasFailed() ? 1 : 2;
    };
    // A system that gives all changes of a tick one time cannot tell at each try.
    int fewest = 2;
    for (int tries = 0; fewest == 2 && tries < 5000; ++tries)
    {
        write("replacement", "newer");
        fewest = flushes();
    }
    EXPECT_EQ(fewest, 1);
    write("replacement", "newer");
    std::ofstream(m_replacement.native(), std::ios::app) << " still";
    EXPECT_EQ(flushes(), 2);
    // As many bytes, at once.
    write("replacement", "newer");
    std::ofstream(m_replacement.native(), std::ios::in) << "other";
    EXPECT_EQ(flushes(), 2);
    write("replacement", "newer");
    ASSERT_EQ(::chmod(m_target.c_str(), 0600), 0);
    EXPECT_EQ(flushes(), 2);
    write("replacement", "newer");
    write("other", "newer");
    EXPECT_EQ(flushes(), 2);
}

TEST_F(PosixSwapTest, ExchangeThatIsNotFlushedIsUndone)
{
    const FailingCall linking("link", EPERM);
    const FailingCall failing("fsync", EIO, 2);
    EXPECT_FALSE(Swap());
    EXPECT_EQ(Bytes(m_target), "old");
    EXPECT_EQ(EntriesOf(m_folder.Path()), 1);
}

TEST_F(PosixSwapTest, FolderThatKnowsNoFlushIsGoodEnough)
{
    const FailingCall failing("fsync", EINVAL, 2);
    EXPECT_TRUE(Swap());
    EXPECT_EQ(Bytes(m_target), "new");
}

TEST_F(PosixSwapTest, FolderThatMayNotBeReadIsFlushedWithItsFileSystem)
{
    {
        const FailingCall failing("open", EACCES, 2);
        EXPECT_TRUE(Swap());
        EXPECT_EQ(Bytes(m_target), "new");
    }
    m_folder.File("replacement", "newer");
    const FailingCall opening("open", EACCES, 2);
    const FailingCall failing("syncfs", EIO);
    EXPECT_FALSE(Swap());
    EXPECT_TRUE(failing.HasFailed());
    EXPECT_EQ(Bytes(m_target), "new");
}

TEST_F(PosixSwapTest, InterruptedCallsGoOn)
{
    for (const char* const call : {"open", "link", "fsync", "rename"})
    {
        m_folder.File("target", "old");
        m_folder.File("replacement", "new");
        const FailingCall failing(call, EINTR);
        EXPECT_TRUE(Swap()) << call;
        EXPECT_TRUE(failing.HasFailed());
        EXPECT_EQ(Bytes(m_target), "new");
    }
}

TEST_F(PosixSwapTest, MemoryThatRunsOutAtAnyPointLeavesNothingBehind)
{
    SetAttribute(m_target, "user.kept", "old");
    const OtherDevice other;
    for (const bool isAcross : {false, true})
    {
        if (isAcross && other.IsThere())
        {
            remove(m_target);
            std::ofstream((other.Path() / "real").native()) << "old";
            create_symlink(other.Path() / "real", m_target);
        }
        bool hasFailed = true;
        for (int at = 1; hasFailed; ++at)
        {
            m_folder.File("replacement", "new");
            bool isThrown = false;
            {
                const FailingCall failing("operator new", ENOMEM, at);
                try
                {
                    Swap();
                }
                catch (const std::bad_alloc&)
                {
                    isThrown = true;
                }
                hasFailed = failing.HasFailed();
            }
            EXPECT_EQ(isThrown, hasFailed);
            EXPECT_EQ(Bytes(m_target), hasFailed ? "old" : "new") << at;
            EXPECT_EQ(exists(m_replacement), hasFailed) << at;
            EXPECT_EQ(exists(m_backup), !hasFailed && !isAcross) << at;
            EXPECT_LE(EntriesOf(other.Path()), 1) << at;
        }
        remove(m_backup);
    }
}

TEST_F(PosixSwapTest, AttributesThatCannotGoOverDoNotHinder)
{
    if (!SetAttribute(m_target, "user.kept", "old"))
        GTEST_SKIP() << "The file system has no extended attributes";
    ASSERT_EQ(::chmod(m_target.c_str(), 0600), 0);
    for (const char* const call : {"fstat", "listxattr", "getxattr", "fgetxattr", "fsetxattr", "fchmod"})
    {
        m_folder.File("replacement", "new");
        m_folder.File("target", "old");
        const FailingCall failing(call, EIO, FailingCall::always);
        EXPECT_TRUE(Swap()) << call;
        EXPECT_TRUE(failing.HasFailed()) << call;
        EXPECT_EQ(Bytes(m_target), "new");
        SetAttribute(m_target, "user.kept", "old");
        ::chmod(m_target.c_str(), 0600);
    }
}

TEST_F(PosixSwapTest, MountedFileIsNotReplaced)
{
    support::Child child(
        [&]
        {
            if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                ::mount(m_folder.File("mounted", "old").c_str(), m_target.c_str(), nullptr, MS_BIND, nullptr) != 0)
                return 99;
            if (Swap() || LastError() != 1175)
                return 1;
            return Bytes(m_target) == "old" && Bytes(m_replacement) == "new" && EntriesOf(m_folder.Path()) == 3 ? 0 : 2;
        });
    const int code = child.ExitCode();
    if (code == 99)
        GTEST_SKIP() << "The user lacks the right to mount files";
    EXPECT_EQ(code, 0);
}

namespace
{

class PosixFileSystemTest : public ::testing::Test
{
protected:
    ~PosixFileSystemTest() override { EXPECT_LE(support::OpenDescriptors(), m_descriptors); }

    const support::TemporaryFolder m_folder;
    const std::ptrdiff_t m_descriptors = support::OpenDescriptors();
};

}

TEST_F(PosixFileSystemTest, FileMovesToAnotherDeviceWithItsTimesAndPermissions)
{
    const OtherDevice other;
    if (!other.IsThere())
        GTEST_SKIP() << "There is no second device to write to";
    const path file = m_folder.File("a", "bytes");
    const timespec times[] = {{1000, 0}, {2000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
    std::ofstream((other.Path() / "b").native()) << "other";
    ASSERT_TRUE(FileSystem().Move(file, other.Path() / "b")) << LastError();
    EXPECT_FALSE(exists(file));
    EXPECT_EQ(support::TemporaryFolder::BytesOf(other.Path() / "b"), "bytes");
    EXPECT_EQ(StatusOf(other.Path() / "b").st_mtim.tv_sec, 2000);
    EXPECT_EQ(StatusOf(other.Path() / "b").st_mode & 0777U, 0640u);
    EXPECT_EQ(EntriesOf(other.Path()), 1);
}

TEST_F(PosixFileSystemTest, MoveToAnotherDeviceThatFailsChangesNothing)
{
    const OtherDevice other;
    if (!other.IsThere())
        GTEST_SKIP() << "There is no second device to write to";
    const path file = m_folder.File("a", "bytes");
    const struct
    {
        const char* call;
        int error;
        int at;
        DWORD reason;
    } failures[] = {{"write", ENOSPC, 1, 112},
                    {"read", EIO, 1, 31},
                    {"open", EMFILE, 2, 4},
                    {"fsync", ENOSPC, 1, 112},
                    {"rename", EACCES, 2, 5}};
    for (const auto& each : failures)
    {
        const FailingCall failing(each.call, each.error, each.at);
        EXPECT_FALSE(FileSystem().Move(file, other.Path() / "b"));
        EXPECT_EQ(LastError(), each.reason);
        EXPECT_EQ(support::TemporaryFolder::BytesOf(file), "bytes");
        EXPECT_EQ(EntriesOf(other.Path()), 0);
    }
    create_directory(m_folder / "folder");
    EXPECT_FALSE(FileSystem().Move(m_folder / "folder", other.Path() / "folder"));
    EXPECT_EQ(LastError(), 17u);
    EXPECT_FALSE(FileSystem().Move(file, other.Path() / "missing/b"));
    EXPECT_EQ(support::TemporaryFolder::BytesOf(file), "bytes");
}

TEST_F(PosixFileSystemTest, NewFileIsMadeWhereALinkPoints)
{
    create_symlink("real", m_folder / "link");
    EXPECT_TRUE(FileSystem().CreateNew(m_folder / "link"));
    EXPECT_TRUE(exists(m_folder / "real"));
    EXPECT_FALSE(FileSystem().CreateNew(m_folder / "link"));
    EXPECT_EQ(LastError(), 80u);
    create_symlink("loop", m_folder / "loop");
    EXPECT_FALSE(FileSystem().CreateNew(m_folder / "loop"));
    EXPECT_EQ(LastError(), 1921u);
}

TEST_F(PosixFileSystemTest, FileThatTheUserMayNotReadIsNotReadable)
{
    const path file = m_folder.File("a", "bytes");
    ASSERT_EQ(::chmod(file.c_str(), 0), 0);
    support::Child child(
        [&]
        {
            ::chmod(m_folder.Path().c_str(), 0777);
            if (::geteuid() == 0 && ::setresuid(0, 3, 0) != 0) // what counts is who the process acts as
                return 1;
            return FileSystem().IsReadable(file) ? 2 : LastError() == 5 ? 0 : 3;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixFileSystemTest, NamesThatAreNoUtf8AreWhatTheyAre)
{
    const path file = m_folder / "\xFF\xFE";
    EXPECT_TRUE(FileSystem().CreateNew(file));
    EXPECT_EQ(FileSystem().LongName(file), file);
    EXPECT_TRUE(FileSystem().Replace(file, m_folder.File("b", "new"), m_folder / "c"));
    EXPECT_EQ(support::TemporaryFolder::BytesOf(file), "new");
}

namespace
{

/// Another home for the user, for a scope.
class Home
{
public:
    explicit Home(const path& folder)
    {
        for (Variable& each : m_earlier)
        {
            const char* const value = std::getenv(each.name);
            each.isSet = value != nullptr;
            each.value = value != nullptr ? value : "";
            ::unsetenv(each.name);
        }
        ::setenv("HOME", folder.c_str(), 1);
    }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;
    ~Home()
    {
        for (const Variable& each : m_earlier)
            each.isSet ? ::setenv(each.name, each.value.c_str(), 1) : ::unsetenv(each.name);
    }

private:
    struct Variable
    {
        const char* name;
        bool isSet = false;
        std::string value;
    };
    Variable m_earlier[2] = {{"HOME", false, ""}, {"XDG_CONFIG_HOME", false, ""}};
};

}

TEST_F(PosixFileSystemTest, DocumentsAreWhereTheDesktopSays)
{
    const Home home(m_folder.Path());
    EXPECT_EQ(FileSystem().DocumentsFolder(), m_folder.Path());
    create_directory(m_folder / ".config");
    const struct
    {
        const char* text;
        path folder;
    } cases[] = {
        {"XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n", m_folder / "Dokumente"},
        {"# a comment\nXDG_DESKTOP_DIR=\"$HOME/x\"\nXDG_DOCUMENTS_DIR=\"/srv/a\\\"b\\\\\"\n", "/srv/a\"b\\"},
        {"XDG_DOCUMENTS_DIR=\"/first\"\nXDG_DOCUMENTS_DIR=\"/last\"", "/last"},
        {"XDG_DOCUMENTS_DIR=\"$HOME/\"", path(m_folder.Path().native() + "/")},
        {"XDG_DOCUMENTS_DIR=\"/first\"\nXDG_DOCUMENTS_DIR=\"$HOME\"", m_folder.Path()},
        {"XDG_DOCUMENTS_DIR=\"$HOMES/Documents\"\n", m_folder.Path()},
        {"XDG_DOCUMENTS_DIR=\"relative\"\n", m_folder.Path()},
        {"XDG_DOCUMENTS_DIR='/single'\n", m_folder.Path()},
        {"XDG_DOCUMENTS_DIR=\n", m_folder.Path()},
        {"XDG_DOCUMENTS_DIR=\"\\", m_folder.Path()},
    };
    for (const auto& each : cases)
    {
        m_folder.File(".config/user-dirs.dirs", each.text);
        EXPECT_EQ(FileSystem().DocumentsFolder(), each.folder) << each.text;
    }
    ::setenv("XDG_CONFIG_HOME", (m_folder / "other").c_str(), 1);
    EXPECT_EQ(FileSystem().DocumentsFolder(), m_folder.Path());
    create_directory(m_folder / "other");
    m_folder.File("other/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"/other\"\n");
    EXPECT_EQ(FileSystem().DocumentsFolder(), "/other");
}

TEST_F(PosixFileSystemTest, DocumentsOfAUserWithoutAHomeVariableAreInTheHomeOfTheAccount)
{
    const Home home("odd");
    EXPECT_TRUE(FileSystem().DocumentsFolder().is_absolute());
}

TEST_F(PosixFileSystemTest, DocumentsInAHomeThatIsNotKnownAreNowhere)
{
    const Home home("odd");
    m_folder.File("user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Documents\"\n");
    support::Child child(
        [this]
        {
            ::setenv("XDG_CONFIG_HOME", m_folder.Path().c_str(), 1);
            ::chmod(m_folder.Path().c_str(), 0755);
            if (::setuid(54321) != 0) // nobody's number
                return 99;
            return FileSystem().DocumentsFolder().empty() ? 0 : 1;
        });
    const int code = child.ExitCode();
    if (code == 99)
        GTEST_SKIP() << "The user lacks the right to be another one";
    EXPECT_EQ(code, 0);
}

TEST_F(PosixFileSystemTest, SearchForTheHomeOfTheAccountLeavesTheRecordOfAnotherAlone)
{
    const Home home("odd");
    const uid_t other = ::geteuid() + 1;
    const passwd* const known = ::getpwuid(other);
    if (known == nullptr)
        GTEST_SKIP() << "There is no other account";
    FileSystem().DocumentsFolder();
    EXPECT_EQ(known->pw_uid, other);
}

TEST_F(PosixFileSystemTest, SystemFolderIsThatOfTheCLibrary)
{
    const path folder = FileSystem().SystemFolder();
    EXPECT_TRUE(exists(folder / "libc.so.6")) << folder;
    std::ifstream maps("/proc/self/maps");
    const std::string all(std::istreambuf_iterator<char>(maps), {});
    EXPECT_NE(all.find(canonical(folder / "libc.so.6").native()), std::string::npos) << folder;
}

TEST_F(PosixFileSystemTest, SystemFolderIsNowhereWhereTheCLibraryIsNotKnown)
{
    const FailingCall failing("dlopen", ENOMEM);
    EXPECT_EQ(FileSystem().SystemFolder(), "");
    EXPECT_EQ(LastError(), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_TRUE(failing.HasFailed());
}
