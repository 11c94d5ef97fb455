#include "utility/failures/Failures.h"

#include "tests/support/ForwardingLocale.h"
#include "tests/support/ForwardingText.h"
#include "tests/support/GlobalLocale.h"
#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"
#include "utility/startup/LibraryFrame.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace
{

const std::string message8301 = "End of file found whilst trying to read a real number.";

template <class Throw>
std::string TextThrownBy(Throw action)
{
    try
    {
        action();
    }
    catch (const CSourceLocationException& failure)
    {
        return failure.what();
    }
    return "nothing thrown";
}

template <class... Types>
constexpr bool AreUnrelated = ((!std::is_base_of_v<std::exception, Types> && !std::is_base_of_v<CObject, Types>)&&...);

}

TEST(FailureTypesTest, FourUnrelatedRoots)
{
    static_assert(AreUnrelated<CError, CTextError, AlgorithmFailure>);
    static_assert(std::is_base_of_v<CError, CTextError>);
    static_assert(std::is_base_of_v<std::runtime_error, CSourceLocationException>);
    static_assert(std::is_base_of_v<CSourceLocationException, CInputRecordException>);
    static_assert(std::is_base_of_v<CSourceLocationException, CTextRecordException>);
    static_assert(!std::is_base_of_v<CInputRecordException, CTextRecordException>);
    static_assert(!std::is_base_of_v<CTextRecordException, CInputRecordException>);
    static_assert(std::is_base_of_v<CException, COSException>);
    static_assert(!std::is_base_of_v<std::exception, COSException>);
    static_assert(!std::is_polymorphic_v<AlgorithmFailure>);
    static_assert(sizeof(CError::SEVERITY) == 4);
}

TEST(ErrorTest, KeepsSeverityAndMessage)
{
    const CError fromString(CError::SeverityWarning, std::wstring(L"one\0two", 7));
    EXPECT_EQ(fromString.Severity(), CError::SeverityWarning);
    EXPECT_EQ(fromString.Message(), std::wstring(L"one\0two", 7));
    const CError fromText(static_cast<CError::SEVERITY>(-77), L"text");
    EXPECT_EQ(static_cast<int>(fromText.Severity()), -77);
    EXPECT_EQ(fromText.Message(), L"text");
}

TEST(ErrorTest, StringIsMovedIn)
{
    std::wstring text(100, L'x');
    const wchar_t* const characters = text.data();
    const CError error(CError::SeverityError, std::move(text));
    EXPECT_EQ(error.Message().data(), characters);
}

TEST(TextErrorTest, MessageIsTakenOutOfTheArgument)
{
    for (const std::wstring& text : {std::wstring(L"short"), std::wstring(100, L'x')})
    {
        std::wstring argument = text;
        const CTextError error(CError::SeverityError, std::move(argument), 0x123456789AULL);
        EXPECT_EQ(argument, L"");
        EXPECT_EQ(error.Message(), text);
        EXPECT_EQ(error.Offset(), 0x123456789AULL);
    }
}

TEST(TextErrorTest, IsCaughtAsAnErrorAndCopiesWhole)
{
    try
    {
        throw CTextError(CError::SeverityError, L"bad", 5);
    }
    catch (const CError& failure)
    {
        const CTextError copy(dynamic_cast<const CTextError&>(failure));
        EXPECT_EQ(copy.Offset(), 5u);
        EXPECT_EQ(copy.Message(), L"bad");
    }
}

TEST(SourceLocationExceptionTest, LongFormNamesFileAndLine)
{
    EXPECT_EQ(CSourceLocationException("reader", 120, 8301).what(),
              message8301 + " [exception thrown from reader, line 120.]");
}

TEST(SourceLocationExceptionTest, ShortFormNamesNeither)
{
    EXPECT_EQ(CSourceLocationException(8301).what(), message8301 + " [exception thrown]");
}

TEST(SourceLocationExceptionTest, NumberWithoutStringGivesALeadingBlank)
{
    EXPECT_STREQ(CSourceLocationException().what(), " [exception thrown]");
    EXPECT_STREQ(CSourceLocationException(0).what(), " [exception thrown]");
    EXPECT_STREQ(CSourceLocationException(999999).what(), " [exception thrown]");
    EXPECT_STREQ(CSourceLocationException("f", 1, 999999).what(), " [exception thrown from f, line 1.]");
}

TEST(SourceLocationExceptionTest, PercentSignsOfFileAndMessageStand)
{
    EXPECT_STREQ(CSourceLocationException("100%1%", -3, 8310).what(),
                 "Please enter a number greater than %1%. [exception thrown from 100%1%, line -3.]");
}

TEST(SourceLocationExceptionTest, LineIsPlainDecimalInEveryGlobalLocale)
{
    const support::GlobalLocale scope(support::GroupingLocale());
    EXPECT_STREQ(CSourceLocationException("f", 1234567, 0).what(), " [exception thrown from f, line 1234567.]");
}

TEST(SourceLocationExceptionTest, TextIsUtf8WhateverTheCodePage)
{
    support::FakeModule module;
    support::TableModules modules;
    modules.strings[{module.Handle(), 50001}] = L"\u00B0C \u65E5\u672C";
    ZeloInitMFCExtensionDLL(module.Handle(), module.Handle());
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    struct : support::ForwardingText
    {
        int ToCodePage(UINT codePage, const wchar_t* text, int length, char* out, int capacity) override
        {
            const UINT systems = 1252;
            return ForwardingText::ToCodePage(codePage == CP_ACP ? systems : codePage, text, length, out, capacity);
        }
    } service;
    const support::Substitute<utility::platform::TextService> textScope(utility::platform::TextSlot(), service);
    EXPECT_STREQ(CSourceLocationException(50001).what(), "\xC2\xB0"
                                                         "C \xE6\x97\xA5\xE6\x9C\xAC [exception thrown]");
}

TEST(SourceLocationExceptionTest, CopiesAndMovesKeepTheText)
{
    const CSourceLocationException source("reader", 120, 8301);
    CSourceLocationException copy(source);
    EXPECT_STREQ(copy.what(), source.what());
    CSourceLocationException moved(std::move(copy));
    EXPECT_STREQ(moved.what(), source.what());
    CSourceLocationException assigned;
    assigned = source;
    EXPECT_STREQ(assigned.what(), source.what());
    auto& itself = assigned;
    assigned = itself;
    EXPECT_STREQ(assigned.what(), source.what());
    assigned = CSourceLocationException();
    EXPECT_STREQ(assigned.what(), " [exception thrown]");
    EXPECT_EQ(source.what(), message8301 + " [exception thrown from reader, line 120.]");
}

TEST(ThrowSourceLocationExceptionTest, FileAndLineAreDeliberatelyIgnored)
{
    EXPECT_EQ(TextThrownBy([] { ThrowSourceLocationException("reader", 7, 8301); }),
              message8301 + " [exception thrown]");
    EXPECT_EQ(TextThrownBy([] { ThrowSourceLocationException(nullptr, 0, 8301); }),
              message8301 + " [exception thrown]");
}

TEST(InputRecordExceptionTest, TextIsTheLocationWithoutTheDetail)
{
    EXPECT_EQ(TextThrownBy([] { throw CInputRecordException("reader", 7, 99); }),
              " [exception thrown from reader, line 7.]");
}

TEST(InputRecordExceptionTest, CopiesAndMovesKeepTheText)
{
    CInputRecordException source("reader", 7, 99);
    const CInputRecordException copy(source);
    const CInputRecordException moved(std::move(source));
    EXPECT_STREQ(copy.what(), " [exception thrown from reader, line 7.]");
    EXPECT_STREQ(moved.what(), copy.what());
}

TEST(TextRecordExceptionTest, HasTheMessageTheLocationAndThePlace)
{
    const char text[] = "1.5X";
    try
    {
        throw CTextRecordException("reader", 7, 8301, text + 3);
    }
    catch (const CTextRecordException& failure)
    {
        EXPECT_EQ(failure.what(), message8301 + " [exception thrown from reader, line 7.]");
        EXPECT_EQ(failure.Place(), text + 3);
        EXPECT_EQ(CTextRecordException(failure).Place(), text + 3);
    }
}

TEST(TextRecordExceptionTest, TwinsAreCaughtByTheirOwnType)
{
    EXPECT_THROW(throw CTextRecordException("f", 1, 0, nullptr), CTextRecordException);
    EXPECT_THROW(
        {
            try
            {
                throw CInputRecordException("f", 1, 0);
            }
            catch (const CTextRecordException&)
            {
            }
        },
        CInputRecordException);
}

TEST(OSExceptionTest, RecordsTheLatestError)
{
    utility::platform::SetLastError(ERROR_FILE_NOT_FOUND);
    COSException latest;
    utility::platform::SetLastError(ERROR_ACCESS_DENIED);
    COSException given(ERROR_FILE_NOT_FOUND);
    wchar_t text[256];
    wchar_t expected[256];
    ASSERT_EQ(latest.GetErrorMessage(text, 256, nullptr), 1);
    ASSERT_EQ(given.GetErrorMessage(expected, 256, nullptr), 1);
    EXPECT_STREQ(text, expected);
    ASSERT_EQ(COSException(ERROR_ACCESS_DENIED).GetErrorMessage(expected, 256, nullptr), 1);
    EXPECT_STRNE(text, expected);
}

TEST(OSExceptionTest, HelpContextBecomesZeroAndMayBeNull)
{
    COSException failure(ERROR_FILE_NOT_FOUND);
    wchar_t text[256] = L"";
    unsigned int helpContext = 77;
    EXPECT_EQ(failure.GetErrorMessage(text, 256, &helpContext), 1);
    EXPECT_EQ(helpContext, 0u);
    EXPECT_EQ(failure.GetErrorMessage(text, 256, nullptr), 1);
    EXPECT_STRNE(text, L"");
}

TEST(OSExceptionTest, UnknownErrorGivesZeroButStillAHelpContext)
{
    wchar_t text[256];
    unsigned int helpContext = 77;
    EXPECT_EQ(COSException(0x2FFFFFFF).GetErrorMessage(text, 256, &helpContext), 0);
    EXPECT_EQ(helpContext, 0u);
}

TEST(OSExceptionTest, BufferThatIsTooSmallGivesZero)
{
    wchar_t text[3] = {L'a', L'b', L'c'};
    EXPECT_EQ(COSException(ERROR_FILE_NOT_FOUND).GetErrorMessage(text, 2, nullptr), 0);
    EXPECT_EQ(text[2], L'c');
}

TEST(OSExceptionTest, SuccessHasAMessageToo)
{
    wchar_t text[256];
    EXPECT_EQ(COSException(ERROR_SUCCESS).GetErrorMessage(text, 256, nullptr), 1);
}

struct LanguageCase
{
    LCID threadLocale;
    DWORD language;
};

class OSExceptionLanguageTest : public ::testing::TestWithParam<LanguageCase>
{
};

TEST_P(OSExceptionLanguageTest, AsksForTheDefaultOfTheCallersPrimaryLanguage)
{
    struct : support::ForwardingLocale
    {
        LCID ThreadLocale() override { return GetParam().threadLocale; }
    } const locale;
    support::ForwardingText service;
    const support::Substitute<utility::platform::TextService> scope(utility::platform::TextSlot(), service);
    wchar_t text[256];
    COSException(ERROR_FILE_NOT_FOUND).GetErrorMessage(text, 256, nullptr);
    EXPECT_EQ(service.askedLanguage, GetParam().language);
}

INSTANTIATE_TEST_SUITE_P(Locales, OSExceptionLanguageTest,
                         ::testing::Values(LanguageCase{0x0409, 0x0409}, LanguageCase{0x0809, 0x0409},
                                           LanguageCase{0x0C07, 0x0407}, LanguageCase{0x10407, 0x0407},
                                           LanguageCase{0x0D07, 0x0507}, LanguageCase{0x0000, 0x0400}));

TEST(AlgorithmFailureTest, MessageIsEmptyUnlessGiven)
{
    const AlgorithmFailure failure("f", 3);
    EXPECT_EQ(failure.FileName(), "f");
    EXPECT_EQ(failure.LineNumber(), 3u);
    EXPECT_EQ(failure.Message(), "");
    EXPECT_EQ(AlgorithmFailure("f", 3, "why").Message(), "why");
    EXPECT_EQ(AlgorithmFailure("f", -1).LineNumber(), 0xFFFFFFFFu);
}

TEST(AlgorithmFailureTest, MessageIsDeliberatelyACopy)
{
    static_assert(
        std::is_same_v<decltype(&AlgorithmFailure::Message), const std::string (AlgorithmFailure::*)() const>);
    const AlgorithmFailure failure("f", 3, "why");
    const std::string& first = failure.Message();
    const std::string& second = failure.Message();
    EXPECT_NE(&first, &second);
    EXPECT_EQ(&failure.FileName(), &failure.FileName());
}

TEST(AlgorithmFailureTest, CopiesAreIndependent)
{
    const AlgorithmFailure copy = [] { return AlgorithmFailure(AlgorithmFailure("file", 9, "message")); }();
    EXPECT_EQ(copy.FileName(), "file");
    EXPECT_EQ(copy.LineNumber(), 9u);
    EXPECT_EQ(copy.Message(), "message");
}
