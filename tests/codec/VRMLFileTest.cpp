#include "utility/codec/VRMLFile.h"

#include "tests/support/ForwardingFiles.h"
#include "tests/support/ForwardingZlib.h"
#include "tests/support/Gunzip.h"
#include "tests/support/Substitute.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/framework/FileException.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

static_assert(!std::is_polymorphic_v<CVRMLFile>);
static_assert(!std::is_copy_constructible_v<CVRMLFile> && !std::is_copy_assignable_v<CVRMLFile>);

namespace
{

using namespace std::string_literals;
using support::Gunzip;
using utility::platform::WideFromPath;

const std::string header = "\x1F\x8B\x08\0\0\0\0\0\0\x0B"s;
const std::string emptyBlock = "\x03\0"s;
const std::string eightZeros(8, '\0');

std::string FourBytes(std::uint64_t value)
{
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes += static_cast<char>(value >> 8 * i);
    return bytes;
}

/// The checksum by its definition, bit by bit.
std::uint32_t Crc32(const std::string& text)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char c : text)
    {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

/// What a compressed file ends in.
std::string TrailerOf(const std::string& text) { return FourBytes(Crc32(text)) + FourBytes(text.size()); }

/// What hardly any compression makes shorter, without a null.
std::string Noise(std::size_t size)
{
    std::mt19937 random(1);
    std::string text(size, '\0');
    std::ranges::generate(text, [&random] { return static_cast<char>(random() % 255 + 1); });
    return text;
}

std::string Scene()
{
    std::string text = "#VRML V2.0 utf8\n";
    for (int number = 0; number < 3000; ++number)
        text += std::to_string(number * 0.125) + ' ' + std::to_string(number * number % 1000) + " -1,\n";
    return text;
}

struct Failure
{
    std::int32_t error = 0;
    std::wstring file;
};

/// The failure that something throws; error 0 if nothing is thrown.
Failure FailureOf(const std::function<void()>& work)
{
    try
    {
        work();
        return {};
    }
    catch (CFileException* failure)
    {
        const std::unique_ptr<CFileException> owner(failure);
        EXPECT_EQ(failure->m_cause, CFileException::OsErrorToException(failure->m_lOsError));
        return {failure->m_lOsError, failure->m_strFileName};
    }
}

class VRMLFileTest : public ::testing::Test
{
protected:
    std::string Content() const { return support::TemporaryFolder::BytesOf(path); }

    support::TemporaryFolder folder;
    const boost::filesystem::path path = folder / "part.wrl";
    support::ForwardingFiles files;
    support::ForwardingZlib zlib;
    const support::Substitute<utility::platform::FileService> filesScope{utility::platform::FilesSlot(), files};
    const support::Substitute<utility::platform::ZlibService> zlibScope{utility::platform::ZlibSlot(), zlib};
    CVRMLFile file;
};

TEST_F(VRMLFileTest, PlainFileIsTheTextAndDeliberatelyEightZeroBytes)
{
    EXPECT_TRUE(file.Open(path, false, 6));
    file << "#VRML V2.0 utf8\n"
         << ""
         << "Shape {}\n";
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(Content(), "#VRML V2.0 utf8\nShape {}\n" + eightZeros);
    EXPECT_EQ(zlib.calls, std::vector<std::string>{"Checksum"}); // that of the constructor
}

TEST_F(VRMLFileTest, CompressedFileIsExpandedToItsTextByOthers)
{
    const std::string text = Scene();
    EXPECT_TRUE(file.Open(path, true, 6));
    for (std::size_t at = 0; at < text.size(); at += 100)
        EXPECT_EQ(&(file << text.substr(at, 100).c_str()), &file);
    EXPECT_GT(zlib.blocks, 0);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(zlib.blocks, 0);
    const std::string content = Content();
    EXPECT_TRUE(Gunzip(content) == text);
    EXPECT_EQ(content.substr(0, 10), header);
    EXPECT_EQ(content.substr(content.size() - 8), TrailerOf(text));
    EXPECT_LT(content.size(), text.size() / 3);
}

TEST_F(VRMLFileTest, LevelChangesNothingButTheCompressedText)
{
    const std::string text = Scene();
    std::vector<std::size_t> sizes;
    for (const int level : {-1, 0, 1, 6, 9})
    {
        CVRMLFile each;
        ASSERT_TRUE(each.Open(path, true, level));
        each << text.c_str();
        each.Close();
        const std::string content = Content();
        EXPECT_TRUE(Gunzip(content) == text) << level;
        EXPECT_EQ(content.substr(0, 10), header) << level;
        EXPECT_EQ(content.substr(content.size() - 8), TrailerOf(text)) << level;
        sizes.push_back(content.size());
    }
    EXPECT_EQ(sizes[0], sizes[3]); // -1 is zlib's own choice
    EXPECT_GT(sizes[1], text.size());
    EXPECT_GT(sizes[2], sizes[3]);
    EXPECT_GT(sizes[3], sizes[4]);
}

TEST_F(VRMLFileTest, CompressedFileWithoutTextIsHeaderEmptyBlockAndZeros)
{
    ASSERT_TRUE(file.Open(path, true, 9));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(Content(), header + emptyBlock + eightZeros);
    EXPECT_EQ(Gunzip(Content()), "");
}

TEST_F(VRMLFileTest, EmptyTextIsCompressedOnceAndNotCounted)
{
    ASSERT_TRUE(file.Open(path, true, 6));
    zlib.calls.clear();
    files.calls.clear();
    file << "";
    EXPECT_EQ(zlib.calls, std::vector<std::string>{"Deflate"});
    EXPECT_EQ(files.calls, std::vector<std::string>{"Write"});
    file.Close();
    EXPECT_EQ(Content(), header + emptyBlock + eightZeros);
}

TEST_F(VRMLFileTest, InsertionThatYieldsNothingYetIsOneEmptyWrite)
{
    ASSERT_TRUE(file.Open(path, true, 6));
    zlib.calls.clear();
    files.calls.clear();
    file << "Shape {}\n";
    EXPECT_EQ(zlib.calls, (std::vector<std::string>{"Checksum", "Deflate"}));
    EXPECT_EQ(files.calls, std::vector<std::string>{"Write"});
    EXPECT_EQ(boost::filesystem::file_size(path), header.size());
}

TEST_F(VRMLFileTest, CompressedBytesGoOutInPiecesOfAtMost1024)
{
    struct : support::ForwardingFiles
    {
        bool Write(HANDLE handle, const void* data, DWORD size, DWORD& written) override
        {
            sizes.push_back(size);
            return System().Write(handle, data, size, written);
        }
        std::vector<DWORD> sizes;
    } measured;
    const std::string text = Noise(100000);
    {
        const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), measured);
        ASSERT_TRUE(file.Open(path, true, 6));
        file << text.c_str();
        file.Close();
    }
    EXPECT_EQ(std::ranges::max(measured.sizes), 1024u);
    EXPECT_GT(std::ranges::count(measured.sizes, 1024u), 90);
    EXPECT_TRUE(Gunzip(Content()) == text);
}

TEST_F(VRMLFileTest, LongerFileKeepsItsTailUntilTheClose)
{
    const std::string old = Noise(5000);
    for (const bool compress : {false, true})
    {
        folder.File("part.wrl", old);
        CVRMLFile each;
        ASSERT_TRUE(each.Open(path, compress, 6));
        each << "Shape {}\n";
        EXPECT_EQ(boost::filesystem::file_size(path), old.size());
        each.Close();
        if (compress)
            EXPECT_EQ(Gunzip(Content()), "Shape {}\n");
        else
            EXPECT_EQ(Content(), "Shape {}\n" + eightZeros);
    }
}

TEST_F(VRMLFileTest, CloseWithoutOpenThrowsForTheFirstWordOfTheEnd)
{
    const Failure failure = FailureOf([this] { file.Close(); });
    EXPECT_EQ(failure.error, static_cast<std::int32_t>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(failure.file, L"");
    EXPECT_EQ(files.calls, std::vector<std::string>{"Write"});
    EXPECT_EQ(FailureOf([this] { file.CommitAndClose(); }).error, static_cast<std::int32_t>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(FailureOf([this] { file << ""; }).error, static_cast<std::int32_t>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(FailureOf([this] { file.DoDeflate(Z_SYNC_FLUSH); }).error,
              static_cast<std::int32_t>(ERROR_INVALID_HANDLE));
}

TEST_F(VRMLFileTest, SecondCloseThrows)
{
    for (const bool compress : {false, true})
    {
        CVRMLFile each;
        ASSERT_TRUE(each.Open(path, compress, 6));
        each << "text";
        each.Close();
        const std::string content = Content();
        EXPECT_EQ(FailureOf([&each] { each.Close(); }).error, static_cast<std::int32_t>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(Content(), content);
    }
}

TEST_F(VRMLFileTest, LongAndShortNamesAreTreatedAlike)
{
    const boost::filesystem::path earlier = boost::filesystem::current_path();
    boost::filesystem::current_path(folder.Path());
    for (const std::string& name : {"a"s, std::string(200, 'n') + ".wrl.gz"})
    {
        for (const bool byWideText : {false, true})
        {
            CVRMLFile each;
            const std::wstring wide = WideFromPath(name);
            ASSERT_TRUE(byWideText ? each.Open(wide, true, 6) && each.Close() && each.Open(wide.c_str(), true, 6)
                                   : each.Open(boost::filesystem::path(name), true, 6));
            each.Close();
            EXPECT_EQ(folder.BytesOf(folder / name.c_str()), header + emptyBlock + eightZeros);
            files.failing = {"Write"};
            CVRMLFile failing;
            const Failure failure = FailureOf([&] { failing.Open(wide, true, 6); });
            EXPECT_EQ(failure.error, static_cast<std::int32_t>(ERROR_NOT_ENOUGH_MEMORY));
            EXPECT_EQ(failure.file, wide);
            files.failing.clear();
        }
    }
    boost::filesystem::current_path(earlier);
}

TEST_F(VRMLFileTest, FileThatCannotBeOpenedThrowsWithItsPath)
{
    for (const bool compress : {false, true})
    {
        CVRMLFile each;
        const Failure failure = FailureOf([&] { each.Open(folder.Path(), compress, 6); });
        EXPECT_EQ(failure.error, static_cast<std::int32_t>(ERROR_ACCESS_DENIED));
        EXPECT_EQ(failure.file, WideFromPath(folder.Path()));
        const Failure ofName = FailureOf([&] { each.Open(std::wstring(L"a\0b", 3), compress, 6); });
        EXPECT_EQ(ofName.error, static_cast<std::int32_t>(ERROR_INVALID_NAME));
        // How it was to be opened is known all the same.
        const auto before = std::ranges::count(zlib.calls, "Deflate");
        EXPECT_EQ(FailureOf([&] { each << "text"; }).error, static_cast<std::int32_t>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(std::ranges::count(zlib.calls, "Deflate") - before, compress ? 1 : 0);
    }
    EXPECT_EQ(std::ranges::count(zlib.calls, "DeflateInit2"), 0);
}

TEST_F(VRMLFileTest, StreamIsBegunAsRawDeflateWithNothingOfAnEarlierOne)
{
    struct : support::ForwardingZlib
    {
        int DeflateInit2(z_stream& stream, int level, int method, int windowBits, int memoryLevel, int strategy,
                         const char* version, int streamSize) override
        {
            arguments = {level, method, windowBits, memoryLevel, strategy, streamSize};
            versionGiven = version;
            isCleared = stream.zalloc == nullptr && stream.zfree == nullptr && stream.opaque == nullptr &&
                        stream.next_out == nullptr && stream.avail_out == 0;
            return ForwardingZlib::DeflateInit2(stream, level, method, windowBits, memoryLevel, strategy, version,
                                                streamSize);
        }
        std::vector<int> arguments;
        std::string versionGiven;
        bool isCleared = false;
    } recording;
    const support::Substitute<utility::platform::ZlibService> scope(utility::platform::ZlibSlot(), recording);
    for (const int level : {7, 2})
    {
        file.Open(path, true, level);
        EXPECT_EQ(recording.arguments, (std::vector<int>{level, 8, -15, 8, 0, sizeof(z_stream)}));
        EXPECT_EQ(recording.versionGiven, "1.2.8");
        EXPECT_TRUE(recording.isCleared);
        file << "text";
        file.Close();
    }
    EXPECT_EQ(recording.blocks, 0);
}

TEST_F(VRMLFileTest, SecondFileOfAnObjectDeliberatelyGoesOnWithTheChecksum)
{
    file.Open(path, true, 6);
    file << "first";
    file.Close();
    file.Open(path, true, 6);
    file << "other text";
    file.Close();
    const std::string content = Content();
    EXPECT_EQ(content.substr(content.size() - 8), FourBytes(Crc32("firstother text")) + FourBytes(10));
    EXPECT_FALSE(Gunzip(content).has_value());
    file.Open(path, false, 6);
    file << "plain";
    file.Close();
    EXPECT_EQ(Content(), "plain" + FourBytes(Crc32("firstother text")) + FourBytes(10));
}

TEST_F(VRMLFileTest, BytesWrittenPastTheCompressionAreNeitherCompressedNorCounted)
{
    file.Open(path, true, 6);
    file.Write("abcdef", 0x100000003);
    file.Close();
    EXPECT_EQ(Content(), header + "abc" + emptyBlock + eightZeros);
    file.Open(path, false, 6);
    file.Write("a\0b", 3);
    file.Close();
    EXPECT_EQ(Content(), "a\0b"s + eightZeros);
}

TEST_F(VRMLFileTest, FlushBringsWhatWasInsertedIntoTheFile)
{
    const std::string text = Scene();
    file.Open(path, true, 6);
    file << text.c_str();
    EXPECT_EQ(file.DoDeflate(Z_SYNC_FLUSH), Z_OK);
    const std::string flushed = Content();
    const std::string endOfFlush = "\0\0\xFF\xFF"s;
    EXPECT_EQ(flushed.substr(flushed.size() - 4), endOfFlush);
    // With an end behind it, it is all of the text.
    EXPECT_TRUE(Gunzip(flushed + emptyBlock + TrailerOf(text)) == text);
    file << "more";
    EXPECT_EQ(file.DoDeflate(Z_FINISH), Z_STREAM_END);
    file.Close();
    EXPECT_TRUE(Gunzip(Content()) == text + "more");
}

TEST_F(VRMLFileTest, FileThatIsNotClosedLacksItsEnd)
{
    {
        CVRMLFile plain;
        plain.Open(folder.File("part.wrl", Noise(100)), false, 6);
        plain << "text";
    }
    EXPECT_EQ(Content(), "text");
    {
        CVRMLFile compressed;
        compressed.Open(path, true, 6);
        compressed << "text";
    }
    EXPECT_EQ(Content(), header);
    EXPECT_EQ(zlib.blocks, 0);
}

// Failures

/// Writes a file of some pieces, with a close.
void WriteFile(CVRMLFile& file, const boost::filesystem::path& path, bool compress, bool commits)
{
    file.Open(path, compress, 6);
    for (int piece = 0; piece < 4; ++piece)
        file << Noise(3000).c_str();
    file.Write("", 0);
    file.DoDeflate(Z_SYNC_FLUSH);
    if (commits)
        file.CommitAndClose();
    else
        EXPECT_TRUE(file.Close());
}

TEST_F(VRMLFileTest, EachCallThatFailsIsToldAsFarAsTheCloseInQuestionTellsIt)
{
    for (const bool compress : {false, true})
    {
        for (const bool commits : {false, true})
        {
            int failures = 0;
            std::size_t count = 1;
            for (std::size_t number = 1; number <= count; ++number)
            {
                CVRMLFile each;
                files.calls.clear();
                files.failAt = number;
                files.error = ERROR_DISK_FULL;
                const Failure failure = FailureOf([&] { WriteFile(each, path, compress, commits); });
                count = std::max(count, files.calls.size() + 1);
                const std::string failed = number <= files.calls.size() ? files.calls[number - 1] : "";
                const bool isTold = failed == "OpenForWriting" || failed == "Write" || (commits && !failed.empty());
                EXPECT_EQ(failure.error, isTold ? static_cast<std::int32_t>(ERROR_DISK_FULL) : 0) << number << failed;
                EXPECT_EQ(failure.file, isTold ? WideFromPath(path) : std::wstring()) << number << failed;
                failures += isTold ? 1 : 0;
                files.failAt = 0;
            }
            EXPECT_GT(failures, compress ? 12 : 7);
            EXPECT_EQ(zlib.blocks, 0);
        }
    }
}

TEST_F(VRMLFileTest, AfterAFailedCloseTheFileStaysOpenAsLongAsTheObject)
{
    auto each = std::make_unique<CVRMLFile>();
    each->Open(path, true, 6);
    files.failing = {"Write"};
    EXPECT_NE(FailureOf([&each] { each->Close(); }).error, 0);
    files.failing.clear();
    EXPECT_EQ(FailureOf([this] { CMemoryMappedFile(path, 0); }).error,
              static_cast<std::int32_t>(ERROR_SHARING_VIOLATION));
    each.reset();
    EXPECT_EQ(FailureOf([this] { CMemoryMappedFile(path, 0); }).error, 0);
    EXPECT_EQ(zlib.blocks, 0);
}

TEST_F(VRMLFileTest, CommitWritesTheSameFileAndBringsItToTheDisk)
{
    for (const bool compress : {false, true})
    {
        CVRMLFile closed;
        WriteFile(closed, path, compress, false);
        const std::string content = Content();
        CVRMLFile committed;
        WriteFile(committed, folder.File("part.wrl", Noise(50000)), compress, true);
        EXPECT_TRUE(Content() == content);
        const std::vector<std::string> last(files.calls.end() - 5, files.calls.end());
        EXPECT_EQ(last, (std::vector<std::string>{"Write", "Write", "TruncateHere", "FlushToDisk", "Close"}));
    }
}

TEST_F(VRMLFileTest, CompressionThatFailsLeavesAnIncompleteFileOfWhichTheCommitTells)
{
    for (const char* const call : {"DeflateInit2", "Deflate"})
    {
        for (const int result : {Z_MEM_ERROR, Z_VERSION_ERROR})
        {
            CVRMLFile each;
            zlib.failing = {call};
            zlib.result = result;
            EXPECT_TRUE(each.Open(path, true, 6));
            each << "text";
            EXPECT_TRUE(each.Close());
            EXPECT_EQ(Content(), header + FourBytes(Crc32("text")) + FourBytes(0)) << call;

            CVRMLFile committed;
            EXPECT_TRUE(committed.Open(path, true, 6));
            committed << "text";
            const Failure failure = FailureOf([&committed] { committed.CommitAndClose(); });
            // A stream that was not begun is refused for another reason.
            const bool isLacking = result == Z_VERSION_ERROR && call == "Deflate"s;
            EXPECT_EQ(failure.error, static_cast<std::int32_t>(isLacking ? ERROR_MOD_NOT_FOUND : ERROR_WRITE_FAULT));
            EXPECT_EQ(failure.file, WideFromPath(path));
        }
    }
    zlib.failing.clear();
    EXPECT_EQ(zlib.blocks, 0);
}

TEST_F(VRMLFileTest, LevelThatZlibDoesNotKnowLeavesAnIncompleteFile)
{
    EXPECT_TRUE(file.Open(path, true, 10));
    file << "text";
    EXPECT_EQ(file.DoDeflate(Z_SYNC_FLUSH), Z_STREAM_ERROR);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(Content(), header + FourBytes(Crc32("text")) + FourBytes(0));
}

}
