#include "utility/codec/VRMLFile.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/framework/FileException.h"
#include "utility/platform/ErrorCodes.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <zlib.h>

namespace
{

using namespace std::string_literals;
using support::Child;
using support::FailingCall;

class PosixVRMLFileTest : public ::testing::Test
{
protected:
    /// Writes 200 KB that hardly become shorter, and gives the error that it threw, 0 if none.
    std::int32_t Write(bool compress) const
    {
        try
        {
            CVRMLFile file;
            file.Open(path, compress, 6);
            std::uint32_t random = 1;
            for (int piece = 0; piece < 2000; ++piece)
            {
                std::string text(100, '\0');
                for (char& c : text)
                    c = static_cast<char>((random = random * 1664525 + 1013904223) >> 24 | 1);
                file << text.c_str();
            }
            file.CommitAndClose();
            return 0;
        }
        catch (CFileException* failure)
        {
            const std::unique_ptr<CFileException> owner(failure);
            return failure->m_lOsError;
        }
    }

    support::TemporaryFolder folder;
    const boost::filesystem::path path = folder / "part.wrl.gz";
};

}

TEST_F(PosixVRMLFileTest, GunzipExpandsACompressedFile)
{
    std::string text;
    CVRMLFile file;
    file.Open(path, true, 9);
    for (int number = 0; number < 20000; ++number)
    {
        const std::string line = std::to_string(number * 0.1) + " 0 -1,\n";
        file << line.c_str();
        text += line;
    }
    file.Close();
    std::FILE* const pipe = ::popen(("gunzip --stdout '" + path.native() + "'").c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string expanded;
    char part[4096];
    for (std::size_t size = 0; (size = std::fread(part, 1, sizeof(part), pipe)) != 0;)
        expanded.append(part, size);
    EXPECT_EQ(::pclose(pipe), 0);
    EXPECT_TRUE(expanded == text);
}

TEST_F(PosixVRMLFileTest, InsertionAllocatesNothing)
{
    const std::string text(10000, 'x');
    for (const bool compress : {false, true})
    {
        CVRMLFile file;
        file.Open(path, compress, 6);
        const FailingCall noMemory("operator new", ENOMEM, FailingCall::always);
        file << ""
             << "Shape {}\n"
             << text.c_str();
        EXPECT_FALSE(noMemory.HasFailed());
    }
}

TEST_F(PosixVRMLFileTest, InterruptedAndShortWritesAreMadeUpFor)
{
    for (const bool compress : {false, true})
    {
        EXPECT_EQ(Write(compress), 0);
        const std::string whole = folder.BytesOf(path);
        const FailingCall interrupted("write", EINTR, 3);
        const support::ShortWrites few(7);
        EXPECT_EQ(Write(compress), 0);
        EXPECT_TRUE(interrupted.HasFailed());
        EXPECT_TRUE(folder.BytesOf(path) == whole);
    }
}

TEST_F(PosixVRMLFileTest, FullDiskIsToldByTheFailureOfAWrite)
{
    for (const bool compress : {false, true})
    {
        for (const char* const limit : {"size=4k", "size=64k", "size=128k"})
        {
            Child child(
                [&]
                {
                    if (::unshare(CLONE_NEWNS) != 0 ||
                        ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                        ::mount("none", folder.Path().c_str(), "tmpfs", 0, limit) != 0)
                        return 99;
                    if (Write(compress) != static_cast<std::int32_t>(ERROR_DISK_FULL))
                        return 1;
                    // With room there the next file is whole.
                    if (::mount("none", folder.Path().c_str(), nullptr, MS_REMOUNT, "size=1m") != 0)
                        return 2;
                    return Write(compress) == 0 ? 0 : 3;
                });
            const int code = child.ExitCode();
            if (code == 99)
                GTEST_SKIP() << "The user lacks the right to mount file systems";
            EXPECT_EQ(code, 0) << limit;
        }
    }
}

TEST_F(PosixVRMLFileTest, LimitOfAFilesSizeIsToldByTheFailureOfAWrite)
{
    for (const bool compress : {false, true})
    {
        Child child(
            [&]
            {
                ::signal(SIGXFSZ, SIG_IGN);
                const rlimit limit{5000, 5000};
                ::setrlimit(RLIMIT_FSIZE, &limit);
                return Write(compress);
            });
        EXPECT_EQ(child.ExitCode(), static_cast<int>(ERROR_FILE_TOO_LARGE));
        EXPECT_EQ(boost::filesystem::file_size(path), 5000u);
    }
}

namespace
{

[[noreturn]] void CompressWithoutZlib(const boost::filesystem::path& path)
{
    const FailingCall missing("dlopen", ENOENT, FailingCall::always);
    CVRMLFile file;
    EXPECT_TRUE(file.Open(path, true, 6));
    file << "text";
    EXPECT_EQ(file.DoDeflate(Z_SYNC_FLUSH), Z_VERSION_ERROR);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(support::TemporaryFolder::BytesOf(path), "\x1F\x8B\x08\0\0\0\0\0\0\x0B\0\0\0\0\0\0\0\0"s);
    CVRMLFile committed;
    committed.Open(path, true, 6);
    try
    {
        committed.CommitAndClose();
        ADD_FAILURE() << "nothing was thrown";
    }
    catch (CFileException* failure)
    {
        EXPECT_EQ(failure->m_lOsError, static_cast<std::int32_t>(ERROR_MOD_NOT_FOUND));
        failure->Delete();
    }
    CVRMLFile plain;
    const boost::filesystem::path other = path.native() + " plain";
    plain.Open(other, false, 6);
    plain << "text";
    plain.CommitAndClose();
    EXPECT_EQ(support::TemporaryFolder::BytesOf(other), "text"s + std::string(8, '\0'));
    EXPECT_TRUE(missing.HasFailed());
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

}

TEST_F(PosixVRMLFileTest, WithoutZlibACompressedFileHasNoTextAndThePlainOneAll)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(CompressWithoutZlib(path), testing::ExitedWithCode(0), "");
}
