#include "utility/files/TextInputOutputFile.h"

#include "tests/support/ForwardingFiles.h"
#include "tests/support/LogSettings.h"
#include "tests/support/PathsWithoutLocale.h"
#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThreadLog.h"
#include "utility/framework/FileException.h"
#include "utility/framework/internal/ResourceModules.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using support::Logged;

using Messages = std::vector<Logged>;

constexpr int badCharacterInReal = 8303;
const std::wstring badXInReal = L"Invalid character (x) found whilst reading a real number.\n";

class CTextInputOutputFileTest : public ::testing::Test
{
protected:
    CTextInputOutputFileTest()
    {
        SetLogDebugMessages(true);
        file.SetIssueMessages(true);
        file.SetVerboseMessages(true);
    }

    const support::LogSettings settings;
    support::ThreadLog log;
    support::TemporaryFolder folder;
    CTextInputOutputFile file;
};

TEST_F(CTextInputOutputFileTest, DataOfAClosedFileIsNull)
{
    EXPECT_EQ(file.DataPtr(), nullptr);
    ASSERT_TRUE(file.Open(folder.File("a", "twelve bytes")));
    EXPECT_NE(file.DataPtr(), nullptr);
    EXPECT_TRUE(file.Close(0));
    EXPECT_EQ(file.DataPtr(), nullptr);
}

TEST_F(CTextInputOutputFileTest, PlacesAreCountedInLinesAndColumnsFromOne)
{
    ASSERT_TRUE(file.Open(folder.File("a", "ab\ncd\r\ne\r\rf\n\n")));
    const std::vector<TextPosition> expected{{1, 1}, {1, 2}, {1, 3}, {2, 1}, {2, 2}, {2, 3}, {2, 4},
                                             {3, 1}, {3, 2}, {4, 1}, {5, 1}, {5, 2}, {6, 1}, {7, 1}};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(file.PositionOf(file.DataPtr() + i), expected[i]) << i;
}

TEST_F(CTextInputOutputFileTest, PlaceBehindACarriageReturnThatEndsTheFileIsInANewLine)
{
    ASSERT_TRUE(file.Open(folder.File("a", "ab\r")));
    EXPECT_EQ(file.PositionOf(file.DataPtr() + 3), (TextPosition{2, 1}));
}

TEST_F(CTextInputOutputFileTest, PlaceOutsideTheViewHasNoPosition)
{
    EXPECT_EQ(file.PositionOf(nullptr), TextPosition());
    EXPECT_EQ(file.PositionOf("elsewhere"), TextPosition());
    ASSERT_TRUE(file.Open(folder.File("a", "ab")));
    EXPECT_EQ(file.PositionOf(nullptr), TextPosition());
    EXPECT_EQ(file.PositionOf(file.DataPtr() - 1), TextPosition());
    EXPECT_EQ(file.PositionOf(file.DataPtr() + 3), TextPosition());
}

TEST_F(CTextInputOutputFileTest, DataOfAWrittenFileIsNull)
{
    ASSERT_TRUE(file.Open(folder / "a", 0));
    EXPECT_EQ(file.DataPtr(), nullptr);
}

TEST_F(CTextInputOutputFileTest, ConstructorOpensToReadAndSetsBothFlags)
{
    const CTextInputOutputFile opened(folder.File("a", "twelve bytes"));
    ASSERT_TRUE(opened.IsValid());
    EXPECT_EQ(std::string(opened.DataPtr(), opened.GetFileSize()), "twelve bytes");
    EXPECT_EQ(opened.DataPtr(), opened.GetBase());
    EXPECT_TRUE(opened.IssueMessages());
    EXPECT_TRUE(opened.VerboseMessages());
}

TEST_F(CTextInputOutputFileTest, WideTextNamesAFileWhateverTheLocale)
{
    const std::wstring path = folder.File("a", "twelve bytes").wstring();
    const support::PathsWithoutLocale unconverted;
    EXPECT_EQ(CTextInputOutputFile(path).GetFileSize(), 12u);
    EXPECT_EQ(CTextInputOutputFile(path.c_str()).GetFileSize(), 12u);
}

TEST_F(CTextInputOutputFileTest, FileThatCannotBeMappedIsNotValidAndNothingIsThrown)
{
    const CTextInputOutputFile empty(folder.File("a", ""));
    EXPECT_FALSE(empty.IsValid());
    EXPECT_EQ(empty.DataPtr(), nullptr);
}

TEST_F(CTextInputOutputFileTest, FailureToOpenPassesThrough)
{
    try
    {
        const CTextInputOutputFile missing(folder / "missing");
        FAIL() << "nothing was thrown";
    }
    catch (CFileException* exception)
    {
        EXPECT_EQ(exception->m_lOsError, 2);
        exception->Delete();
    }
}

TEST_F(CTextInputOutputFileTest, CopyAndMoveDoTheSame)
{
    ASSERT_TRUE(file.Open(folder.File("a", "twelve bytes")));
    file.SetIssueMessages(false);
    const char* const data = file.DataPtr();
    // All of them close the same handles in the end, the later ones in vain.
    const CTextInputOutputFile copy(file);
    const CTextInputOutputFile moved(std::move(file));
    CTextInputOutputFile copyAssigned;
    copyAssigned = copy;
    CTextInputOutputFile moveAssigned;
    moveAssigned = std::move(copyAssigned);
    for (const CTextInputOutputFile* each :
         {&std::as_const(file), &copy, &moved, &std::as_const(copyAssigned), &std::as_const(moveAssigned)})
    {
        EXPECT_TRUE(each->IsValid());
        EXPECT_EQ(each->DataPtr(), data);
        EXPECT_FALSE(each->IssueMessages());
        EXPECT_TRUE(each->VerboseMessages());
    }
}

TEST_F(CTextInputOutputFileTest, DestroyingItByItsBaseCloses)
{
    support::ForwardingFiles files;
    const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), files);
    std::unique_ptr<CInputOutputFile> opened = std::make_unique<CTextInputOutputFile>(folder.File("a", "twelve bytes"));
    files.calls.clear();
    opened.reset();
    EXPECT_EQ(files.calls, (std::vector<std::string>{"UnmapView", "Close", "Close"}));
}

TEST_F(CTextInputOutputFileTest, AddsNoField) { EXPECT_EQ(sizeof(CTextInputOutputFile), sizeof(CInputOutputFile)); }

// --- Issuing

void TextWarning(CTextInputOutputFile& file) { file.IssueWarning(file.DataPtr(), badCharacterInReal, 'x'); }
void TextError(CTextInputOutputFile& file) { file.IssueError(file.DataPtr(), badCharacterInReal, 'x'); }
void BinaryWarning(CTextInputOutputFile& file) { file.CInputOutputFile::IssueWarning(badCharacterInReal, 'x'); }
void BinaryError(CTextInputOutputFile& file)
{
    CInputOutputFile& binary = file;
    binary.IssueError(badCharacterInReal, 'x');
}

struct Gate
{
    const char* name;
    void (*issue)(CTextInputOutputFile& file);
    LogSeverity severity;
    bool issueFlag;
    bool verboseFlag;
    bool logs;
};

class CTextInputOutputFileGateTest : public CTextInputOutputFileTest, public ::testing::WithParamInterface<Gate>
{
};

// The verbose flag deliberately acts on the warnings of text files alone.
INSTANTIATE_TEST_SUITE_P(
    Flags, CTextInputOutputFileGateTest,
    ::testing::Values(Gate{"TextWarningNeither", TextWarning, LogSeverityWarning, false, false, false},
                      Gate{"TextWarningVerboseOnly", TextWarning, LogSeverityWarning, false, true, false},
                      Gate{"TextWarningIssueOnly", TextWarning, LogSeverityWarning, true, false, false},
                      Gate{"TextWarningBoth", TextWarning, LogSeverityWarning, true, true, true},
                      Gate{"TextErrorNeither", TextError, LogSeverityError, false, false, false},
                      Gate{"TextErrorVerboseOnly", TextError, LogSeverityError, false, true, false},
                      Gate{"TextErrorIssueOnly", TextError, LogSeverityError, true, false, true},
                      Gate{"TextErrorBoth", TextError, LogSeverityError, true, true, true},
                      Gate{"BinaryWarningNeither", BinaryWarning, LogSeverityWarning, false, false, false},
                      Gate{"BinaryWarningVerboseOnly", BinaryWarning, LogSeverityWarning, false, true, false},
                      Gate{"BinaryWarningIssueOnly", BinaryWarning, LogSeverityWarning, true, false, true},
                      Gate{"BinaryWarningBoth", BinaryWarning, LogSeverityWarning, true, true, true},
                      Gate{"BinaryErrorNeither", BinaryError, LogSeverityError, false, false, false},
                      Gate{"BinaryErrorVerboseOnly", BinaryError, LogSeverityError, false, true, false},
                      Gate{"BinaryErrorIssueOnly", BinaryError, LogSeverityError, true, false, true},
                      Gate{"BinaryErrorBoth", BinaryError, LogSeverityError, true, true, true}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(CTextInputOutputFileGateTest, OpensAsTheFlagsSay)
{
    support::TableModules modules;
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    file.SetIssueMessages(GetParam().issueFlag);
    file.SetVerboseMessages(GetParam().verboseFlag);
    GetParam().issue(file);
    EXPECT_EQ(log.Take(), (GetParam().logs ? Messages{{GetParam().severity, badXInReal}} : Messages()));
    // A closed gate does not even load the message.
    EXPECT_EQ(modules.lookups != 0, GetParam().logs);
}

TEST_P(CTextInputOutputFileGateTest, WithoutDebugMessagesTheSeverityIsNone)
{
    SetLogDebugMessages(false);
    file.SetIssueMessages(GetParam().issueFlag);
    file.SetVerboseMessages(GetParam().verboseFlag);
    GetParam().issue(file);
    EXPECT_EQ(log.Take(), Messages());
    SetLogLevel(LogSeverityNone);
    GetParam().issue(file);
    EXPECT_EQ(log.Take(), (GetParam().logs ? Messages{{LogSeverityNone, badXInReal}} : Messages()));
}

TEST_F(CTextInputOutputFileTest, PlaceIsDeliberatelyIgnored)
{
    ASSERT_TRUE(file.Open(folder.File("a", "twelve bytes")));
    const char elsewhere = '\0';
    for (const char* place : {static_cast<const char*>(nullptr), file.DataPtr(), file.DataPtr() + 12, &elsewhere,
                              reinterpret_cast<const char*>(1)})
    {
        file.IssueError(place, badCharacterInReal, 'x');
        file.IssueWarning(place, badCharacterInReal, 'x');
        EXPECT_EQ(log.Take(), (Messages{{LogSeverityError, badXInReal}, {LogSeverityWarning, badXInReal}}));
    }
}

TEST_F(CTextInputOutputFileTest, ClosedGateLooksAtNoArgument)
{
    support::TableModules modules;
    modules.strings[{utility::framework::FirstLibrary()->Resources(), 40000}] = L"%s";
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    file.SetVerboseMessages(false);
    file.IssueWarning(nullptr, 40000, reinterpret_cast<const wchar_t*>(1));
    file.SetIssueMessages(false);
    file.IssueError(nullptr, 40000, reinterpret_cast<const wchar_t*>(1));
    EXPECT_EQ(log.Take(), Messages());
}

TEST_F(CTextInputOutputFileTest, ArgumentsOfAllKindsArrive)
{
    support::TableModules modules;
    modules.strings[{utility::framework::FirstLibrary()->Resources(), 40000}] = L"%c %s %d %.3f %I64d %s";
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    file.IssueWarning(nullptr, 40000, L'c', L"wide", -5, 2.5, 0x123456789ALL, L"last");
    file.IssueError(nullptr, 40000, L'd', L"", 5, -2.5, -1LL, L"end");
    EXPECT_EQ(log.Take(), (Messages{{LogSeverityWarning, L"c wide -5 2.500 78187493530 last\n"},
                                    {LogSeverityError, L"d  5 -2.500 -1 end\n"}}));
}

template <class File>
concept HasBinaryForm = requires(File file)
{
    file.IssueError(badCharacterInReal);
};

TEST_F(CTextInputOutputFileTest, TextFormsHideTheBinaryForms)
{
    EXPECT_TRUE(HasBinaryForm<CInputOutputFile>);
    EXPECT_FALSE(HasBinaryForm<CTextInputOutputFile>);
}

}
