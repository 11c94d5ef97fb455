#include "utility/framework/FileException.h"

#include "resources/StringIds.h"
#include "tests/support/ForwardingText.h"
#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"
#include "utility/platform/ErrorCodes.h"
#include "utility/platform/Text.h"

#include <gtest/gtest.h>

#include <memory>

struct OsErrorCase
{
    std::int32_t osError;
    CFileException::Cause cause;
};

class FileExceptionCauseTest : public ::testing::TestWithParam<OsErrorCase>
{
};

TEST_P(FileExceptionCauseTest, StandsForTheSystemsError)
{
    EXPECT_EQ(CFileException::OsErrorToException(GetParam().osError), GetParam().cause);
}

INSTANTIATE_TEST_SUITE_P(
    OsErrors, FileExceptionCauseTest,
    ::testing::Values(OsErrorCase{0, CFileException::none}, OsErrorCase{1, CFileException::genericException},
                      OsErrorCase{2, CFileException::fileNotFound}, OsErrorCase{3, CFileException::badPath},
                      OsErrorCase{4, CFileException::tooManyOpenFiles}, OsErrorCase{5, CFileException::accessDenied},
                      OsErrorCase{6, CFileException::invalidFile}, OsErrorCase{12, CFileException::accessDenied},
                      OsErrorCase{15, CFileException::badPath}, OsErrorCase{16, CFileException::removeCurrentDir},
                      OsErrorCase{19, CFileException::accessDenied}, OsErrorCase{25, CFileException::badSeek},
                      OsErrorCase{29, CFileException::hardIO}, OsErrorCase{30, CFileException::hardIO},
                      OsErrorCase{31, CFileException::hardIO}, OsErrorCase{32, CFileException::sharingViolation},
                      OsErrorCase{33, CFileException::lockViolation}, OsErrorCase{38, CFileException::endOfFile},
                      OsErrorCase{39, CFileException::diskFull}, OsErrorCase{80, CFileException::accessDenied},
                      OsErrorCase{112, CFileException::diskFull}, OsErrorCase{123, CFileException::badPath},
                      OsErrorCase{131, CFileException::badSeek}, OsErrorCase{183, CFileException::accessDenied},
                      OsErrorCase{206, CFileException::badPath}, OsErrorCase{1921, CFileException::badPath},
                      OsErrorCase{99999, CFileException::genericException},
                      OsErrorCase{-1, CFileException::genericException}),
    [](const auto& row)
    { return row.param.osError < 0 ? std::string("Negative") : "Error" + std::to_string(row.param.osError); });

namespace
{

std::wstring MessageOf(CFileException& failure)
{
    wchar_t text[1024];
    EXPECT_EQ(failure.GetErrorMessage(text, 1024, nullptr), 1);
    return text;
}

std::wstring MessageOf(int cause)
{
    CFileException failure(cause);
    return MessageOf(failure);
}

}

TEST(FileExceptionTest, DefaultIsNoFailure)
{
    const CFileException failure;
    EXPECT_EQ(failure.m_cause, CFileException::none);
    EXPECT_EQ(failure.m_lOsError, -1);
    EXPECT_EQ(failure.m_strFileName, L"");
}

TEST(FileExceptionTest, EachCauseHasWordsOfItsOwn)
{
    for (int cause = CFileException::none; cause <= CFileException::endOfFile; ++cause)
    {
        EXPECT_NE(MessageOf(cause), L"");
        for (int other = cause + 1; other <= CFileException::endOfFile; ++other)
            EXPECT_NE(MessageOf(cause), MessageOf(other)) << cause << ' ' << other;
    }
    EXPECT_EQ(MessageOf(99), MessageOf(CFileException::genericException));
}

TEST(FileExceptionTest, MessageHasCauseAndPath)
{
    CFileException failure(CFileException::fileNotFound, -1, L"some/path");
    EXPECT_EQ(MessageOf(failure), L"The file was not found: some/path");
}

TEST(FileExceptionTest, MessageHasTheSystemsWordsWithoutTheirFullStop)
{
    CFileException failure(CFileException::fileNotFound, ERROR_FILE_NOT_FOUND, L"some/path");
    const std::wstring text = MessageOf(failure);
    const std::wstring begin = L"The file was not found: some/path (";
    ASSERT_EQ(text.substr(0, begin.size()), begin);
    EXPECT_EQ(text.back(), L')');
    EXPECT_TRUE(std::iswalpha(static_cast<std::wint_t>(text[text.size() - 2])));

    wchar_t system[256];
    const DWORD length = utility::platform::Text().SystemMessage(ERROR_FILE_NOT_FOUND, 0x0409, system, 256);
    const std::wstring words = text.substr(begin.size(), text.size() - begin.size() - 1);
    EXPECT_EQ(std::wstring(system, length).substr(0, words.size()), words);
}

TEST(FileExceptionTest, MessageIsInOneLanguage)
{
    struct : support::TableModules
    {
        std::wstring_view StringOf(HINSTANCE, UINT id) override
        {
            return id == utility::resources::LanguageOfTexts ? L"0407"
                   : id == utility::resources::FileInUse     ? L"Die Datei wird gerade verwendet"
                                                             : L"";
        }
    } german;
    support::ForwardingText texts;
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), german);
    const support::Substitute<utility::platform::TextService> alsoScope(utility::platform::TextSlot(), texts);
    CFileException failure(CFileException::sharingViolation, ERROR_SHARING_VIOLATION, L"p");
    const std::wstring begin = L"Die Datei wird gerade verwendet: p";
    EXPECT_EQ(MessageOf(failure).substr(0, begin.size()), begin);
    EXPECT_EQ(texts.askedLanguage, 0x0407u);
}

TEST(FileExceptionTest, ErrorUnknownToTheSystemAddsNothing)
{
    CFileException failure(CFileException::genericException, 0x2FFFFFFF, L"p");
    EXPECT_EQ(MessageOf(failure), L"The file operation failed: p");
}

TEST(FileExceptionTest, MessageIsCutToTheBuffer)
{
    CFileException failure(CFileException::fileNotFound);
    wchar_t text[5] = L"----";
    unsigned int helpContext = 77;
    EXPECT_EQ(failure.GetErrorMessage(text, 4, &helpContext), 1);
    EXPECT_STREQ(text, L"The");
    EXPECT_EQ(helpContext, 0u);
    EXPECT_EQ(failure.GetErrorMessage(text, 1, nullptr), 1);
    EXPECT_STREQ(text, L"");
    EXPECT_EQ(failure.GetErrorMessage(text, 0, nullptr), 0);
    EXPECT_EQ(failure.GetErrorMessage(nullptr, 0, nullptr), 0);
}

TEST(FileExceptionTest, IsThrownAsAPointer)
{
    try
    {
        CFileException::ThrowOsError(32, L"p");
    }
    catch (CException* failure)
    {
        const std::unique_ptr<CException> owner(failure);
        const auto* const fileFailure = dynamic_cast<CFileException*>(failure);
        ASSERT_NE(fileFailure, nullptr);
        EXPECT_EQ(fileFailure->m_cause, CFileException::sharingViolation);
        EXPECT_EQ(fileFailure->m_lOsError, 32);
        EXPECT_EQ(fileFailure->m_strFileName, L"p");
    }
}

TEST(FileExceptionTest, PathMayBeNull)
{
    CFileException failure(CFileException::diskFull, -1, nullptr);
    EXPECT_EQ(MessageOf(failure), L"The disk is full");
}
