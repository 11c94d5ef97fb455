#include "utility/codec/Zip.h"

#include "tests/support/RecordingZipLibrary.h"
#include "tests/support/Substitute.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using boost::filesystem::path;
using utility::platform::PathFromWide;
using utility::platform::ZipOptions;

namespace
{

class ZipTest : public ::testing::Test
{
protected:
    support::RecordingZipLibrary m_library;
    const support::Substitute<utility::platform::ZipLibraryService> m_scope{utility::platform::ZipLibrarySlot(),
                                                                            m_library};
};

}

TEST_F(ZipTest, WithoutFilesNothingIsWrittenAndTheLibraryIsNotCalled)
{
    EXPECT_FALSE(Zip::ZipFiles("a.zip", {}));
    EXPECT_EQ(m_library.inits, 0);
    EXPECT_EQ(m_library.archives, 0);
}

TEST_F(ZipTest, WithoutTheLibraryNothingIsWritten)
{
    m_library.initResult = 0;
    EXPECT_FALSE(Zip::ZipFiles("a.zip", {"a"}));
    EXPECT_EQ(m_library.archives, 0);
}

TEST_F(ZipTest, AnyResultOfInitButZeroIsSuccess)
{
    m_library.initResult = -1;
    EXPECT_TRUE(Zip::ZipFiles("a.zip", {"a"}));
}

TEST_F(ZipTest, ZeroAloneIsTheResultOfAnArchiveThatWasWritten)
{
    EXPECT_TRUE(Zip::ZipFiles("a.zip", {"a"}));
    for (const int failure : {1, -1, 12})
    {
        m_library.archiveResult = failure;
        EXPECT_FALSE(Zip::ZipFiles("a.zip", {"a"})) << failure;
    }
}

TEST_F(ZipTest, CallbacksSwallowOutputAndAgree)
{
    Zip::ZipFiles("a.zip", {"a"});
    char text[] = "adding: a";
    EXPECT_EQ(m_library.callbacks.output(text, 9), 9);
    EXPECT_EQ(m_library.callbacks.output(text, 0), 0);
    EXPECT_STREQ(text, "adding: a");
    EXPECT_EQ(m_library.callbacks.firstAnswer(), 1);
    EXPECT_EQ(m_library.callbacks.firstAnswer, m_library.callbacks.secondAnswer);
    for (const void* none : m_library.callbacks.none)
        EXPECT_EQ(none, nullptr);
}

TEST_F(ZipTest, OneFileIsAListOfTwoWhoseHeadIsDeliberatelyAnOption)
{
    Zip::ZipFiles("a.zip", {"b"});
    EXPECT_EQ(m_library.command.count, 2);
    EXPECT_EQ(m_library.entries, (std::vector<std::string>{"-UN=UTF8", "b"}));
    EXPECT_EQ(m_library.command.none, nullptr);
}

TEST_F(ZipTest, FilesAreInTheOrderOfTheSet)
{
    Zip::ZipFiles("a.zip", {"c", "a", "b"});
    EXPECT_EQ(m_library.entries, (std::vector<std::string>{"-UN=UTF8", "a", "b", "c"}));
}

TEST_F(ZipTest, OptionsAreThoseOfAFlatArchiveAtLevelNine)
{
    Zip::ZipFiles(path("folder") / "a.zip", {"b"});
    ZipOptions expected;
    std::memset(&expected, 0, sizeof(expected));
    auto* const bytes = reinterpret_cast<unsigned char*>(&expected);
    bytes[48] = bytes[64] = bytes[76] = 1;
    bytes[192] = 0x39;
    expected.rootFolder = m_library.options.rootFolder;
    EXPECT_EQ(std::memcmp(&m_library.options, &expected, 200), 0);
    EXPECT_EQ(m_library.folder, "folder");
}

TEST_F(ZipTest, ArchiveWithoutAFolderHasAnEmptyOne)
{
    Zip::ZipFiles("a.zip", {"b"});
    EXPECT_NE(m_library.options.rootFolder, nullptr);
    EXPECT_EQ(m_library.folder, "");
    EXPECT_EQ(m_library.archive, "a.zip");
}

TEST_F(ZipTest, NamesOfAnyLettersAreUtf8)
{
    const path folder = PathFromWide(L"鉄 Ω");
    Zip::ZipFiles(folder / PathFromWide(L"Prüf.zip"), {PathFromWide(L"Ж\U0001F600.nc")});
    EXPECT_EQ(m_library.folder, "\xE9\x89\x84 \xCE\xA9");
    EXPECT_EQ(m_library.archive.substr(m_library.folder.size() + 1), "Pr\xC3\xBC"
                                                                     "f.zip");
    EXPECT_EQ(m_library.entries.at(1), "\xD0\x96\xF0\x9F\x98\x80.nc");
}

TEST_F(ZipTest, FileWhoseNameBeginsAsAnOptionIsNone)
{
    Zip::ZipFiles("a.zip", {"-m", path("b") / "-m", "-UN=UTF8"});
    EXPECT_EQ(m_library.entries.at(0), "-UN=UTF8");
    EXPECT_EQ(m_library.entries.at(1), "./-UN=UTF8");
    EXPECT_EQ(m_library.entries.at(2), "./-m");
    EXPECT_EQ(m_library.entries.at(3).front(), 'b');
}

TEST_F(ZipTest, NameWithANullCharacterIsRefused)
{
    const path cut = path(path::string_type(path("a.zip").native() + path::value_type() + path("b").native()));
    EXPECT_FALSE(Zip::ZipFiles(cut, {"a"}));
    EXPECT_FALSE(Zip::ZipFiles("a.zip", {"a", cut}));
    EXPECT_EQ(m_library.inits, 0);
}
