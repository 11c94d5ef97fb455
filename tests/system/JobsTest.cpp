#include "utility/system/Jobs.h"

#include "tests/support/Substitute.h"
#include "tests/support/TellingProgram.h"
#include "utility/platform/Error.h"
#include "utility/platform/Handles.h"
#include "utility/platform/Jobs.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using support::TellingProgram;
using utility::platform::LastError;

namespace
{

using Owner = std::unique_ptr<void, int (*)(void*)>;

std::vector<std::string> steps;

HANDLE Numbered(std::intptr_t number) { return reinterpret_cast<HANDLE>(number); }

int CloseEarlier(void* handle)
{
    steps.push_back("earlier " + std::to_string(reinterpret_cast<std::intptr_t>(handle)));
    return 1;
}

/// Handles by number, with what is done in order; a step fails if it is the one to fail.
class ScriptedJobs : public utility::platform::JobService, public utility::platform::HandleService
{
public:
    explicit ScriptedJobs(std::string failing = "") : m_failing(std::move(failing)) { steps.clear(); }

    HANDLE MakeJob() override { return Step("make") ? Numbered(4) : nullptr; }
    bool KillOnClose(HANDLE job) override { return job == Numbered(4) && Step("kill on close"); }
    HANDLE Watch(HANDLE job) override { return job == Numbered(4) && Step("watch") ? Numbered(8) : nullptr; }
    HANDLE StartIn(HANDLE job, const wchar_t* commandLine) override
    {
        return job == Numbered(4) && std::wstring(commandLine) == L"mill" && Step("start") ? Numbered(12) : nullptr;
    }
    std::optional<DWORD> WaitForExitCode(HANDLE, DWORD milliseconds) override { return milliseconds; }

    bool CloseHandle(HANDLE handle) override
    {
        return Step("close " + std::to_string(reinterpret_cast<std::intptr_t>(handle)));
    }
    bool CloseWindowStation(HWINSTA) override { return false; }
    bool DeleteObject(void*) override { return false; }

private:
    bool Step(const std::string& name)
    {
        steps.push_back(name);
        return name != m_failing;
    }

    std::string m_failing;
    support::Substitute<utility::platform::JobService> m_jobs{utility::platform::JobsSlot(), *this};
    support::Substitute<utility::platform::HandleService> m_handles{utility::platform::HandlesSlot(), *this};
};

using Steps = std::vector<std::string>;

class JobTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(CreateJob(job, thread)) << LastError(); }

    Owner job{nullptr, nullptr};
    Owner thread{nullptr, nullptr};
    Owner process{nullptr, nullptr};
    const TellingProgram program;
};

constexpr DWORD longEnough = 100000;

}

TEST(CreateJobTest, OwnsAJobThatKillsAndWhatWatchesIt)
{
    ScriptedJobs jobs;
    {
        Owner job(nullptr, nullptr);
        Owner thread(nullptr, nullptr);
        EXPECT_TRUE(CreateJob(job, thread));
        EXPECT_EQ(job.get(), Numbered(4));
        EXPECT_EQ(thread.get(), Numbered(8));
        EXPECT_EQ(steps, (Steps{"make", "kill on close", "watch"}));
        steps.clear();
    }
    EXPECT_EQ(steps, (Steps{"close 8", "close 4"}));
}

TEST(CreateJobTest, WhatThePointersHadIsClosedByTheirOwnDeleters)
{
    ScriptedJobs jobs;
    Owner job(Numbered(40), &CloseEarlier);
    Owner thread(Numbered(44), &CloseEarlier);
    EXPECT_TRUE(CreateJob(job, thread));
    EXPECT_EQ(steps, (Steps{"make", "earlier 40", "kill on close", "watch", "earlier 44"}));
}

TEST(CreateJobTest, JobThatCannotBeMadeLeavesTheFirstPointerEmptyAndTheSecondAsItWas)
{
    ScriptedJobs jobs("make");
    Owner job(Numbered(40), &CloseEarlier);
    Owner thread(Numbered(44), &CloseEarlier);
    EXPECT_FALSE(CreateJob(job, thread));
    EXPECT_EQ(job, nullptr);
    EXPECT_EQ(thread.get(), Numbered(44));
    EXPECT_EQ(steps, (Steps{"make", "earlier 40"}));
}

TEST(CreateJobTest, JobThatWouldNotKillIsClosed)
{
    ScriptedJobs jobs("kill on close");
    Owner job(nullptr, nullptr);
    Owner thread(Numbered(44), &CloseEarlier);
    EXPECT_FALSE(CreateJob(job, thread));
    EXPECT_EQ(job, nullptr);
    EXPECT_EQ(thread.get(), Numbered(44));
    EXPECT_EQ(steps, (Steps{"make", "kill on close", "close 4"}));
}

TEST(CreateJobTest, JobThatNothingWatchesIsClosedAndTheSecondPointerEmpty)
{
    ScriptedJobs jobs("watch");
    Owner job(nullptr, nullptr);
    Owner thread(Numbered(44), &CloseEarlier);
    EXPECT_FALSE(CreateJob(job, thread));
    EXPECT_EQ(job, nullptr);
    EXPECT_EQ(thread, nullptr);
    EXPECT_EQ(steps, (Steps{"make", "kill on close", "watch", "earlier 44", "close 4"}));
}

TEST(StartInJobTest, FailureLeavesThePointerAsItWas)
{
    ScriptedJobs jobs("start");
    Owner process(Numbered(40), &CloseEarlier);
    EXPECT_FALSE(StartInJob(Numbered(4), L"mill", process));
    EXPECT_EQ(process.get(), Numbered(40));
    EXPECT_EQ(steps, Steps{"start"});
}

TEST(StartInJobTest, ProcessTakesThePlaceOfWhatThePointerHad)
{
    ScriptedJobs jobs;
    Owner process(Numbered(40), &CloseEarlier);
    EXPECT_TRUE(StartInJob(Numbered(4), L"mill", process));
    EXPECT_EQ(process.get(), Numbered(12));
    EXPECT_EQ(steps, (Steps{"start", "earlier 40"}));
}

TEST(WaitForExitCodeTest, WaitsForEverUnlessATimeIsGiven)
{
    ScriptedJobs jobs;
    EXPECT_EQ(WaitForExitCode(Numbered(12)), 0xFFFFFFFF);
    EXPECT_EQ(WaitForExitCode(Numbered(12), 5), 5u);
}

TEST_F(JobTest, ExitCodeIsThatOfTheProcessHoweverOftenItIsAsked)
{
    ASSERT_TRUE(StartInJob(job.get(), (program.Line() + L" exit=7").c_str(), process));
    EXPECT_EQ(WaitForExitCode(process.get(), longEnough), 7u);
    EXPECT_EQ(WaitForExitCode(process.get(), 0), 7u);
    EXPECT_EQ(program.Told(), "<exit=7>");
}

TEST_F(JobTest, WatchEndsWithZeroWhenTheLastProcessHas)
{
    ASSERT_TRUE(StartInJob(job.get(), (program.Line() + L" exit=7").c_str(), process));
    EXPECT_EQ(WaitForExitCode(thread.get(), longEnough), 0u);
    EXPECT_EQ(WaitForExitCode(thread.get(), 0), 0u);
    EXPECT_EQ(WaitForExitCode(process.get(), 0), 7u);
}

TEST_F(JobTest, WatchGoesOnAsLongAsAProcessIsLeft)
{
    Owner other(nullptr, nullptr);
    ASSERT_TRUE(StartInJob(job.get(), (program.Line() + L" sleep").c_str(), other));
    ASSERT_TRUE(StartInJob(job.get(), (program.Line() + L" exit=0").c_str(), process));
    EXPECT_EQ(WaitForExitCode(process.get(), longEnough), 0u);
    EXPECT_EQ(WaitForExitCode(thread.get(), 100), std::nullopt);
    EXPECT_EQ(LastError(), 0u);
    EXPECT_EQ(WaitForExitCode(other.get(), 0), std::nullopt);
}

TEST_F(JobTest, ClosingItKillsWhatIsInItWhichTheWatchTells)
{
    ASSERT_TRUE(StartInJob(job.get(), (program.Line() + L" sleep").c_str(), process));
    EXPECT_EQ(program.ToldAtLast(), "<sleep>");
    job.reset();
    EXPECT_TRUE(WaitForExitCode(process.get(), longEnough).has_value());
    EXPECT_EQ(WaitForExitCode(thread.get(), longEnough), 0u);
}

TEST_F(JobTest, WatchOfAnEmptyJobGoesOnDeliberatelyAlsoWhenTheJobIsClosed)
{
    // The watch has begun by then.
    EXPECT_EQ(WaitForExitCode(thread.get(), 2000), std::nullopt);
    job.reset();
    EXPECT_EQ(WaitForExitCode(thread.get(), 300), std::nullopt);
    EXPECT_EQ(LastError(), 0u);
}

TEST_F(JobTest, CommandThatCannotBeStartedIsRefusedAndLeavesTheJobEmpty)
{
    EXPECT_FALSE(StartInJob(job.get(), L"there-is-no-such-program", process));
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_FALSE(StartInJob(job.get(), L"", process));
    EXPECT_FALSE(StartInJob(job.get(), nullptr, process));
    EXPECT_EQ(process, nullptr);
    EXPECT_EQ(WaitForExitCode(thread.get(), 100), std::nullopt);
    ASSERT_TRUE(StartInJob(job.get(), (program.Line() + L" exit=3").c_str(), process));
    EXPECT_EQ(WaitForExitCode(process.get(), longEnough), 3u);
}

TEST_F(JobTest, WhatIsNoJobIsRefused)
{
    EXPECT_FALSE(StartInJob(thread.get(), (program.Line() + L" exit=0").c_str(), process));
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(StartInJob(INVALID_HANDLE_VALUE, (program.Line() + L" exit=0").c_str(), process));
    EXPECT_EQ(WaitForExitCode(nullptr, 0), std::nullopt);
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

TEST_F(JobTest, OneJobDoesNotTakeAnotherAlong)
{
    Owner otherJob(nullptr, nullptr);
    Owner otherThread(nullptr, nullptr);
    Owner otherProcess(nullptr, nullptr);
    ASSERT_TRUE(CreateJob(otherJob, otherThread));
    ASSERT_TRUE(StartInJob(otherJob.get(), (program.Line() + L" sleep").c_str(), otherProcess));
    ASSERT_TRUE(StartInJob(job.get(), (program.Line() + L" sleep").c_str(), process));
    job.reset();
    EXPECT_EQ(WaitForExitCode(thread.get(), longEnough), 0u);
    EXPECT_EQ(WaitForExitCode(otherProcess.get(), 100), std::nullopt);
}
