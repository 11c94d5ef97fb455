#include "utility/platform/CrashedProcess.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"
#include "utility/platform/Modules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>

using support::TemporaryFolder;
using utility::platform::CrashedProcess;
using utility::platform::LoadedModule;

namespace
{

const char addressInThisProgram = 0;

/// How the end of a line is written.
const std::string lineEnd = sizeof(wchar_t) == 2 ? "\r\n" : "\n";

}

TEST(CrashedProcessTest, IsThisOneUnlessSomebodySaysOtherwise)
{
    EXPECT_EQ(CrashedProcess().ProgramPath(), utility::platform::Modules().FileName(nullptr));
}

TEST(CrashedProcessTest, HasItsProgramAmongItsModules)
{
    const auto address = reinterpret_cast<std::uintptr_t>(&addressInThisProgram);
    const std::vector<LoadedModule> modules = CrashedProcess().Modules();
    EXPECT_GT(modules.size(), 2U);
    const auto program = std::ranges::find(modules, CrashedProcess().ProgramPath(), &LoadedModule::path);
    ASSERT_NE(program, modules.end());
    EXPECT_LT(address - program->base, program->size);
    EXPECT_EQ(std::ranges::count(modules, program->path, &LoadedModule::path), 1);
    // Modules of Windows tell themselves when they were made.
    EXPECT_EQ(program->time.has_value(), sizeof(wchar_t) == 4);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(CrashedProcess().ModuleAt(&addressInThisProgram)), program->base);
    EXPECT_EQ(CrashedProcess().ModuleAt(reinterpret_cast<const void*>(-1)), nullptr);
}

TEST(CrashedProcessTest, FolderThatIsThereIsAsGoodAsOneThatIsMade)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(CrashedProcess().MakeFolders(folder / "a" / "b"));
    EXPECT_TRUE(CrashedProcess().MakeFolders(folder / "a" / "b"));
    folder.File("file", "");
    EXPECT_FALSE(CrashedProcess().MakeFolders(folder / "file" / "b"));
}

TEST(CrashedProcessTest, ReportTakesThePlaceOfAnOlderOneWhichNobodyElseMayWriteMeanwhile)
{
    const TemporaryFolder folder;
    const boost::filesystem::path file = folder.File("report.xml", std::string(1000, 'x'));
    std::unique_ptr<std::wostream> report = CrashedProcess().OpenReport(file);
    ASSERT_NE(report, nullptr);
    *report << L"one\n" << 1234567 << L'\n';
    EXPECT_EQ(CrashedProcess().OpenReport(file), nullptr);
    report.reset();
    EXPECT_EQ(TemporaryFolder::BytesOf(file), "one" + lineEnd + "1234567" + lineEnd);
    EXPECT_NE(CrashedProcess().OpenReport(file), nullptr);
    EXPECT_EQ(CrashedProcess().OpenReport(folder / "nowhere" / "report.xml"), nullptr);
}

TEST(CrashedProcessTest, ReportThatIsFlushedIsInItsFile)
{
    const TemporaryFolder folder;
    const std::unique_ptr<std::wostream> report = CrashedProcess().OpenReport(folder / "report.xml");
    *report << std::wstring(100000, L'x');
    report->flush();
    boost::system::error_code ignored;
    EXPECT_EQ(boost::filesystem::file_size(folder / "report.xml", ignored), 100000U);
}
