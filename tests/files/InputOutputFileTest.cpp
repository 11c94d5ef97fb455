#include "utility/files/InputOutputFile.h"

#include "tests/support/ForwardingFiles.h"
#include "tests/support/LogSettings.h"
#include "tests/support/PathsWithoutLocale.h"
#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThreadLog.h"
#include "tests/support/WithoutThreadSlot.h"
#include "utility/framework/FileException.h"
#include "utility/framework/internal/ResourceModules.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using support::Logged;
using support::TakeLog;

using Messages = std::vector<Logged>;

constexpr int badCharacterInInteger = 8302;
constexpr int missingMessage = 60000;
const std::wstring badXInInteger = L"Invalid character (x) found whilst reading an integer number.\n";

class CInputOutputFileTest : public ::testing::Test
{
protected:
    CInputOutputFileTest()
    {
        SetLogDebugMessages(true);
        file.SetIssueMessages(true);
        file.SetVerboseMessages(true);
    }

    const support::LogSettings settings;
    support::ThreadLog log;
    support::TemporaryFolder folder;
    CInputOutputFile file;
};

TEST_F(CInputOutputFileTest, DefaultIsClosed)
{
    EXPECT_FALSE(file.IsValid());
    EXPECT_EQ(file.GetBase(), nullptr);
    EXPECT_EQ(file.GetFileSize(), 0u);
}

TEST_F(CInputOutputFileTest, ConstructorOpensToReadAndSetsBothFlags)
{
    const CInputOutputFile opened(folder.File("a", "twelve bytes"));
    ASSERT_TRUE(opened.IsValid());
    EXPECT_EQ(std::string(static_cast<const char*>(opened.GetBase()), opened.GetFileSize()), "twelve bytes");
    EXPECT_TRUE(opened.IssueMessages());
    EXPECT_TRUE(opened.VerboseMessages());
}

TEST_F(CInputOutputFileTest, WideTextNamesAFileWhateverTheLocale)
{
    const std::wstring path = folder.File("a", "twelve bytes").wstring();
    const support::PathsWithoutLocale unconverted;
    EXPECT_EQ(CInputOutputFile(path).GetFileSize(), 12u);
    EXPECT_EQ(CInputOutputFile(path.c_str()).GetFileSize(), 12u);
}

TEST_F(CInputOutputFileTest, FileThatCannotBeMappedIsNotValidAndNothingIsThrown)
{
    const CInputOutputFile empty(folder.File("a", ""));
    EXPECT_FALSE(empty.IsValid());
    EXPECT_TRUE(empty.IssueMessages());
    EXPECT_TRUE(empty.VerboseMessages());
}

TEST_F(CInputOutputFileTest, FailureToOpenPassesThrough)
{
    try
    {
        const CInputOutputFile missing(folder / "missing");
        FAIL() << "nothing was thrown";
    }
    catch (CFileException* exception)
    {
        EXPECT_EQ(exception->m_lOsError, 2);
        exception->Delete();
    }
}

TEST_F(CInputOutputFileTest, FlagsAreTwo)
{
    file.SetIssueMessages(false);
    EXPECT_FALSE(file.IssueMessages());
    EXPECT_TRUE(file.VerboseMessages());
    file.SetVerboseMessages(false);
    EXPECT_FALSE(file.VerboseMessages());
    file.SetIssueMessages(true);
    EXPECT_TRUE(file.IssueMessages());
    EXPECT_FALSE(file.VerboseMessages());
}

TEST_F(CInputOutputFileTest, CopiesTakeTheFlags)
{
    for (const bool issue : {false, true})
    {
        file.SetIssueMessages(issue);
        file.SetVerboseMessages(!issue);
        const CInputOutputFile copy(file);
        EXPECT_EQ(copy.IssueMessages(), issue);
        EXPECT_EQ(copy.VerboseMessages(), !issue);
        CInputOutputFile assigned;
        assigned.SetIssueMessages(!issue);
        assigned.SetVerboseMessages(issue);
        assigned = file;
        EXPECT_EQ(assigned.IssueMessages(), issue);
        EXPECT_EQ(assigned.VerboseMessages(), !issue);
    }
}

TEST_F(CInputOutputFileTest, CopyIsAnAliasOfTheSameOpenFile)
{
    ASSERT_TRUE(file.Open(folder.File("a", "twelve bytes")));
    // Both close the same handles in the end, the second one in vain.
    const CInputOutputFile copy(file);
    EXPECT_TRUE(copy.IsValid());
    EXPECT_EQ(copy.GetBase(), std::as_const(file).GetBase());
    EXPECT_EQ(copy.GetFileSize(), 12u);
}

TEST_F(CInputOutputFileTest, DestroyingItByThisTypeCloses)
{
    support::ForwardingFiles files;
    const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), files);
    auto opened = std::make_unique<CInputOutputFile>(folder.File("a", "twelve bytes"));
    files.calls.clear();
    opened.reset();
    EXPECT_EQ(files.calls, (std::vector<std::string>{"UnmapView", "Close", "Close"}));
}

TEST_F(CInputOutputFileTest, HasAVirtualDestructorWhichItsBaseHasNot)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<CInputOutputFile>);
    EXPECT_FALSE(std::is_polymorphic_v<CMemoryMappedFile>);
    // So the table of virtual operations stands in front of the base part.
    EXPECT_NE(static_cast<void*>(static_cast<CMemoryMappedFile*>(&file)), static_cast<void*>(&file));
}

// --- Issuing

struct Operation
{
    const char* name;
    void (CInputOutputFile::*issue)(int messageId, ...);
    LogSeverity severity;
};

class CInputOutputFileIssueTest : public CInputOutputFileTest, public ::testing::WithParamInterface<Operation>
{
protected:
    template <class... Arguments>
    void Issue(int messageId, Arguments... arguments)
    {
        (file.*GetParam().issue)(messageId, arguments...);
    }
};

INSTANTIATE_TEST_SUITE_P(Operations, CInputOutputFileIssueTest,
                         ::testing::Values(Operation{"IssueWarning", &CInputOutputFile::IssueWarning,
                                                     LogSeverityWarning},
                                           Operation{"IssueError", &CInputOutputFile::IssueError, LogSeverityError}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(CInputOutputFileIssueTest, FormattedMessageAloneArrivesInTheStoreOfTheThreadsDatabase)
{
    Issue(badCharacterInInteger, 'x');
    EXPECT_EQ(log.Take(), (Messages{{GetParam().severity, badXInInteger}}));
}

TEST_P(CInputOutputFileIssueTest, OnlyTheIssueFlagIsTheGate)
{
    for (const bool verbose : {false, true})
    {
        file.SetVerboseMessages(verbose);
        file.SetIssueMessages(false);
        Issue(badCharacterInInteger, 'x');
        EXPECT_EQ(log.Take(), Messages());
        file.SetIssueMessages(true);
        Issue(badCharacterInInteger, 'x');
        EXPECT_EQ(log.Take(), (Messages{{GetParam().severity, badXInInteger}}));
    }
}

TEST_P(CInputOutputFileIssueTest, ClosedGateLoadsNoMessageAndLooksAtNoArgument)
{
    support::TableModules modules;
    modules.strings[{utility::framework::FirstLibrary()->Resources(), 40000}] = L"%s";
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    file.SetIssueMessages(false);
    Issue(40000, reinterpret_cast<const wchar_t*>(1));
    EXPECT_EQ(modules.lookups, 0);
    file.SetIssueMessages(true);
    Issue(40000, L"text");
    EXPECT_GT(modules.lookups, 0);
    EXPECT_EQ(log.Take(), (Messages{{GetParam().severity, L"text\n"}}));
}

TEST_P(CInputOutputFileIssueTest, ArgumentsOfAllKindsArrive)
{
    support::TableModules modules;
    modules.strings[{utility::framework::FirstLibrary()->Resources(), 40000}] = L"%c %s %d %.3f %I64d %s";
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    Issue(40000, L'c', L"wide", -5, 2.5, 0x123456789ALL, L"last");
    EXPECT_EQ(log.Take(), (Messages{{GetParam().severity, L"c wide -5 2.500 78187493530 last\n"}}));
}

TEST_P(CInputOutputFileIssueTest, MessageThatEndsInALineFeedGetsNoSecond)
{
    support::TableModules modules;
    modules.strings[{utility::framework::FirstLibrary()->Resources(), 40000}] = L"two\nlines\n";
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    Issue(40000);
    EXPECT_EQ(log.Take(), (Messages{{GetParam().severity, L"two\nlines\n"}}));
}

TEST_P(CInputOutputFileIssueTest, NumberWithoutAStringLeavesTheLogAsItIs)
{
    Issue(missingMessage, 1);
    EXPECT_EQ(log.Take(), Messages());
}

TEST_P(CInputOutputFileIssueTest, WithoutDebugMessagesNothingReachesTheLogAsARule)
{
    SetLogDebugMessages(false);
    Issue(badCharacterInInteger, 'x');
    EXPECT_EQ(log.Take(), Messages());
}

TEST_P(CInputOutputFileIssueTest, WithoutDebugMessagesTheSeverityIsNone)
{
    SetLogDebugMessages(false);
    SetLogLevel(LogSeverityNone);
    Issue(badCharacterInInteger, 'x');
    EXPECT_EQ(log.Take(), (Messages{{LogSeverityNone, badXInInteger}}));
}

TEST_P(CInputOutputFileIssueTest, LogLevelIsComparedWithTheSeverity)
{
    SetLogLevel(GetParam().severity);
    Issue(badCharacterInInteger, 'x');
    EXPECT_EQ(log.Take().size(), 1u);
    SetLogLevel(static_cast<LogSeverity>(GetParam().severity + 1));
    Issue(badCharacterInInteger, 'x');
    EXPECT_EQ(log.Take(), Messages());
}

TEST_P(CInputOutputFileIssueTest, MessageIsBuiltEvenIfTheLogDoesNotTakeIt)
{
    support::TableModules modules;
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    SetLogDebugMessages(false);
    Issue(badCharacterInInteger, 'x');
    EXPECT_GT(modules.lookups, 0);
    EXPECT_EQ(log.Take(), Messages());
}

TEST_P(CInputOutputFileIssueTest, WithoutADatabaseTheOwnerIsNull)
{
    TakeLog(nullptr);
    SetThreadDatabase(nullptr);
    Issue(badCharacterInInteger, 'x');
    EXPECT_EQ(TakeLog(nullptr), (Messages{{GetParam().severity, badXInInteger}}));
    EXPECT_EQ(log.Take(), Messages());
}

TEST_P(CInputOutputFileIssueTest, WithoutAThreadSlotTheOwnerIsNull)
{
    TakeLog(nullptr);
    {
        const support::WithoutThreadSlot scope(utility::detail::threadDatabaseSlot);
        Issue(badCharacterInInteger, 'x');
    }
    EXPECT_EQ(TakeLog(nullptr), (Messages{{GetParam().severity, badXInInteger}}));
    EXPECT_EQ(log.Take(), Messages());
}

TEST_P(CInputOutputFileIssueTest, OwnerIsTheDatabaseOfTheMoment)
{
    Issue(badCharacterInInteger, 'x');
    {
        support::ThreadLog other;
        Issue(badCharacterInInteger, 'x');
        Issue(badCharacterInInteger, 'x');
        EXPECT_EQ(other.Take().size(), 2u);
    }
    EXPECT_EQ(log.Take().size(), 1u);
}

TEST_P(CInputOutputFileIssueTest, NeitherNeedsAnOpenFileNorChangesOne)
{
    Issue(badCharacterInInteger, 'x');
    const auto path = folder.File("a", "twelve bytes");
    ASSERT_TRUE(file.Open(path));
    const void* const base = file.GetBase();
    Issue(badCharacterInInteger, 'x');
    EXPECT_EQ(log.Take().size(), 2u);
    EXPECT_EQ(file.GetBase(), base);
    EXPECT_EQ(file.GetFileSize(), 12u);
    EXPECT_EQ(std::string(static_cast<const char*>(base), 12), "twelve bytes");
}

TEST(CInputOutputFileThreadTest, ThreadsWithDifferentDatabasesLogToTheirOwnStoresThroughOneFile)
{
    const support::LogSettings settings;
    SetLogDebugMessages(true);
    CInputOutputFile file;
    file.SetIssueMessages(true);
    file.SetVerboseMessages(true);
    constexpr std::size_t count = 100;
    const auto work = [&file](char letter, Messages& messages)
    {
        support::ThreadLog log;
        for (std::size_t i = 0; i < count; ++i)
            file.IssueError(badCharacterInInteger, letter);
        messages = log.Take();
    };
    Messages ofA;
    Messages ofB;
    std::thread a(work, 'a', std::ref(ofA));
    std::thread b(work, 'b', std::ref(ofB));
    a.join();
    b.join();
    const auto expected = [](wchar_t letter)
    {
        const std::wstring text =
            std::wstring(L"Invalid character (") + letter + L") found whilst reading an integer number.\n";
        return Messages(count, {LogSeverityError, text});
    };
    EXPECT_EQ(ofA, expected(L'a'));
    EXPECT_EQ(ofB, expected(L'b'));
}

TEST(CInputOutputFileThreadTest, NewThreadHasNoDatabase)
{
    const support::LogSettings settings;
    SetLogDebugMessages(true);
    support::ThreadLog log;
    TakeLog(nullptr);
    CInputOutputFile file;
    file.SetIssueMessages(true);
    std::thread([&file] { file.IssueError(badCharacterInInteger, 'x'); }).join();
    EXPECT_EQ(TakeLog(nullptr), (Messages{{LogSeverityError, badXInInteger}}));
    EXPECT_EQ(log.Take(), Messages());
}

}
