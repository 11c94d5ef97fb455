#include "utility/files/TextFile.h"

#include "tests/support/ForwardingFiles.h"
#include "tests/support/ForwardingText.h"
#include "tests/support/GlobalLocale.h"
#include "tests/support/Substitute.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/framework/FileException.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>

static_assert(std::is_base_of_v<CTextInputOutputFile, CTextFile>);
static_assert(sizeof(CTextFile) == sizeof(CTextInputOutputFile));

namespace
{

struct OpenTextFile : CTextFile
{
    using CTextFile::Write;
};

class TextFileTest : public ::testing::Test
{
protected:
    TextFileTest() { file.Open(folder / "a"); }

    std::string Written()
    {
        file.Close(0);
        return folder.BytesOf(folder / "a");
    }

    support::TemporaryFolder folder;
    OpenTextFile file;
};

template <class Value>
constexpr Value least = std::numeric_limits<Value>::min();
template <class Value>
constexpr Value most = std::numeric_limits<Value>::max();

TEST_F(TextFileTest, CharactersAndTextsAreWrittenAsTheyStand)
{
    file << 'N' << "10 G01\n"
         << "" << '\0' << "\r\n";
    EXPECT_EQ(Written(), std::string("N10 G01\n\0\r\n", 11));
}

TEST_F(TextFileTest, ZeroIsOneDigit)
{
    file << 0 << 0U << 0L << 0UL << 0LL << 0ULL;
    EXPECT_EQ(Written(), "000000");
}

TEST_F(TextFileTest, SmallestAndGreatestIntegersAreWritten)
{
    file << least<int> << ' ' << most<int> << ' ' << most<unsigned int> << ' ' << least<std::int64_t> << ' '
         << most<std::int64_t> << ' ' << most<std::uint64_t>;
    EXPECT_EQ(Written(), "-2147483648 2147483647 4294967295 -9223372036854775808 9223372036854775807 "
                         "18446744073709551615");
}

TEST_F(TextFileTest, IntegersOfAllTypesHaveTheSameText)
{
    file << -7 << ' ' << -7L << ' ' << -7LL << ' ' << 1234567U << ' ' << 1234567UL << ' ' << 1234567ULL << ' '
         << static_cast<short>(-1) << ' ' << std::int32_t{-12} << ' ' << DWORD{99};
    EXPECT_EQ(Written(), "-7 -7 -7 1234567 1234567 1234567 -1 -12 99");
}

TEST_F(TextFileTest, GlobalLocaleDoesNotGroupDigits)
{
    struct Grouping : std::numpunct<char>
    {
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale earlier = std::locale::global(std::locale(std::locale(), new Grouping));
    file << 1234567;
    std::locale::global(earlier);
    EXPECT_EQ(Written(), "1234567");
}

TEST_F(TextFileTest, DoublesAreWrittenWithTheirPlaces)
{
    file.WriteFixed(10.5, 3) << ' ';
    file.WriteFixed(-0.25, 4, true, ",", true) << ' ';
    file.WriteFixed(2.0, 3, true, ".", true, true) << ' ';
    file.WriteFixed(1.0F, 0) << '\n';
    EXPECT_EQ(Written(), "10.500 -0,25 +2. 1\n");
}

TEST_F(TextFileTest, DoublesOfAnyLengthAreOneWrite)
{
    support::ForwardingFiles files;
    const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), files);
    // 63 characters, 64, 65, and many.
    for (const int decimals : {61, 62, 63, 5000})
        file.WriteFixed(2.5, decimals) << "\n";
    EXPECT_EQ(files.calls, std::vector<std::string>(8, "Write"));
    std::string expected;
    for (const std::size_t zeros : {60U, 61U, 62U, 4999U})
        expected += "2.5" + std::string(zeros, '0') + "\n";
    EXPECT_EQ(Written(), expected);
}

TEST_F(TextFileTest, GlobalLocaleDoesNotChangeDoubles)
{
    const support::GlobalLocale scope(support::GroupingLocale());
    file.WriteFixed(1234567.5, 2);
    EXPECT_EQ(Written(), "1234567.50");
}

TEST_F(TextFileTest, WideTextIsWrittenInTheNarrowEncoding)
{
    file << L"Tool 7 \x00FC";
#ifdef _WIN32
    EXPECT_EQ(Written(), "Tool 7 \xFC");
#else
    EXPECT_EQ(Written(), "Tool 7 \xC3\xBC");
#endif
}

TEST_F(TextFileTest, WideCharacterThatTheEncodingLacksIsReplaced)
{
    file << L"a\xD800z"; // half of a pair
    const std::string written = Written();
    ASSERT_GE(written.size(), 3u);
    EXPECT_EQ(written.front(), 'a');
    EXPECT_EQ(written.back(), 'z');
}

TEST_F(TextFileTest, EmptyWideTextAndNoneWriteNothing)
{
    file << L"" << static_cast<const wchar_t*>(nullptr);
    EXPECT_EQ(Written(), "");
}

TEST_F(TextFileTest, WideTextIsAskedForInTheSystemsCodePageAndCutAtANull)
{
    struct WithNull : support::ForwardingText
    {
        int ToCodePage(UINT codePage, const wchar_t*, int length, char* out, int capacity) override
        {
            asked = codePage;
            lengthAsked = length;
            if (capacity != 0)
                std::char_traits<char>::copy(out, "ab\0d", 4);
            return 4;
        }
        UINT asked = 1;
        int lengthAsked = 0;
    } text;
    const support::Substitute<utility::platform::TextService> scope(utility::platform::TextSlot(), text);
    file << L"abcd";
    EXPECT_EQ(text.asked, CP_ACP);
    EXPECT_EQ(text.lengthAsked, 4);
    EXPECT_EQ(Written(), "ab");
}

TEST_F(TextFileTest, BytesAreWrittenInOnePieceAndTheirCountIsCutTo32Bits)
{
    file.Write("abcdef", 0x100000003);
    EXPECT_EQ(Written(), "abc");
}

TEST_F(TextFileTest, LongerFileIsCutWhereTheWritingEnded)
{
    file << std::string(1000, 'x').c_str();
    file.Close(0);
    ASSERT_TRUE(file.Open(utility::platform::WideFromPath(folder / "a").c_str()));
    file << "0123456789";
    EXPECT_EQ(Written(), "0123456789");
}

TEST_F(TextFileTest, EachInsertionIsOneWrite)
{
    support::ForwardingFiles files;
    const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), files);
    file << 'c' << "" << L"" << L"wide" << -1 << 1U << -1LL << 1ULL;
    EXPECT_EQ(files.calls, std::vector<std::string>(8, "Write"));
    EXPECT_EQ(Written(), "cwide-11-11");
}

TEST_F(TextFileTest, InsertionIntoAClosedFileThrowsAlsoWhereThereIsNothingToWrite)
{
    file.Close(0);
    for (const char* const text : {"", "x"})
    {
        try
        {
            file << text;
            ADD_FAILURE() << "nothing was thrown";
        }
        catch (CFileException* failure)
        {
            const std::unique_ptr<CFileException> owner(failure);
            EXPECT_EQ(failure->m_lOsError, static_cast<std::int32_t>(ERROR_INVALID_HANDLE));
        }
    }
}

TEST_F(TextFileTest, CommitBringsTheFileToTheDiskAndClosesIt)
{
    support::ForwardingFiles files;
    const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), files);
    file << "0123456789";
    file.SetFilePointer(4, FILE_BEGIN);
    files.calls.clear();
    file.CommitAndClose();
    EXPECT_EQ(files.calls, (std::vector<std::string>{"TruncateHere", "FlushToDisk", "Close"}));
    EXPECT_FALSE(file.IsValid());
    EXPECT_EQ(Written(), "0123");
}

TEST_F(TextFileTest, CommitThrowsWhateverFailsOnTheWay)
{
    for (const char* const call : {"TruncateHere", "FlushToDisk", "Close"})
    {
        CTextFile failing;
        failing.Open(folder / call);
        failing << "text";
        support::ForwardingFiles files;
        const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), files);
        files.failing = {call};
        files.error = ERROR_DISK_FULL;
        try
        {
            failing.CommitAndClose();
            ADD_FAILURE() << call;
        }
        catch (CFileException* failure)
        {
            const std::unique_ptr<CFileException> owner(failure);
            EXPECT_EQ(failure->m_lOsError, static_cast<std::int32_t>(ERROR_DISK_FULL)) << call;
            EXPECT_EQ(failure->m_strFileName, utility::platform::WideFromPath(folder / call).c_str());
        }
    }
}

}
