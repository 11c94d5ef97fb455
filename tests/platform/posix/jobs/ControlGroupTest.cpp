#include "utility/platform/posix/jobs/ControlGroup.h"

#include "tests/support/TemporaryFolder.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <unistd.h>

using support::TemporaryFolder;
using utility::platform::posix::ControlGroup;
using utility::platform::posix::ControlGroupFolder;

namespace
{

constexpr char plainMount[] =
    "22 28 0:20 / /proc rw,nosuid - proc proc rw\n29 23 0:26 / /sys/fs/cgroup rw,nosuid,noexec,relatime shared:4 - "
    "cgroup2 cgroup2 rw,nsdelegate,memory_recursiveprot\n";

}

TEST(ControlGroupFolderTest, IsTheGroupBelowTheMountOfItsTree)
{
    EXPECT_EQ(ControlGroupFolder("0::/user.slice/app.scope\n", plainMount), "/sys/fs/cgroup/user.slice/app.scope");
    EXPECT_EQ(ControlGroupFolder("0::/\n", plainMount), "/sys/fs/cgroup/");
}

TEST(ControlGroupFolderTest, IsThatOfVersionTwoAmongOthers)
{
    EXPECT_EQ(ControlGroupFolder("9:name=systemd:/a\n4:memory:/b\n0::/c:0::\n",
                                 "40 31 0:29 / /sys/fs/cgroup/memory rw,relatime - cgroup cgroup rw,memory\n"
                                 "49 31 0:37 / /sys/fs/cgroup/unified rw,relatime - cgroup2 cgroup2 rw\n"),
              "/sys/fs/cgroup/unified/c:0::");
    EXPECT_EQ(ControlGroupFolder("9:name=systemd:/a\n10::/b\n", plainMount), "");
}

TEST(ControlGroupFolderTest, MountMayBeOfAPartOfTheTreeOnly)
{
    const std::string mounts = "29 23 0:26 /docker/1 /sys/fs/cgroup rw shared:4 master:1 - cgroup2 cgroup rw\n";
    EXPECT_EQ(ControlGroupFolder("0::/docker/1/job\n", mounts), "/sys/fs/cgroup/job");
    EXPECT_EQ(ControlGroupFolder("0::/docker/1\n", mounts), "/sys/fs/cgroup");
    EXPECT_EQ(ControlGroupFolder("0::/docker/12\n", mounts), "");
    EXPECT_EQ(ControlGroupFolder("0::/docker\n", mounts), "");
    EXPECT_EQ(ControlGroupFolder("0::/docker/12\n", mounts + plainMount), "/sys/fs/cgroup/docker/12");
}

TEST(ControlGroupFolderTest, BlanksInAMountStandAsNumbers)
{
    EXPECT_EQ(ControlGroupFolder("0::/a b\n", "29 23 0:26 / /my\\040groups\\134 rw - cgroup2 none rw\n"),
              "/my groups\\/a b");
}

TEST(ControlGroupFolderTest, WithoutAMountThereIsNone)
{
    EXPECT_EQ(ControlGroupFolder("0::/a\n", ""), "");
    EXPECT_EQ(ControlGroupFolder("", plainMount), "");
    EXPECT_EQ(ControlGroupFolder("0::/a\n", "29 23 0:26 / /cgroup2 rw - tmpfs cgroup2 rw\n"), "");
    EXPECT_EQ(ControlGroupFolder("0::/a\n", "29 23 0:26 / /sys/fs/cgroup rw -\n\n29\n- cgroup2\n"), "");
}

TEST(ControlGroupTest, FolderThatIsNoGroupIsLeftAsItWas)
{
    const TemporaryFolder folder;
    for (const std::string& each : {folder.Path().string(), std::string(), std::string("/there/is/none")})
    {
        const ControlGroup group(each);
        EXPECT_FALSE(group);
        group.Enter();
        group.Kill();
        group.Remove();
    }
    EXPECT_TRUE(boost::filesystem::is_empty(folder.Path()));
}

TEST(ControlGroupTest, OnlyGroupsOfJobsThatNobodyHoldsAreAbandoned)
{
    const TemporaryFolder folder;
    boost::filesystem::create_directories(folder / "utility-job-held");
    boost::filesystem::create_directories(folder / "utility-job-abandoned/utility-job-within");
    boost::filesystem::create_directories(folder / "other-job");
    const int held = ::open((folder / "utility-job-held").c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    EXPECT_TRUE(ControlGroup::KillAbandoned(folder.Path().string()));
    EXPECT_FALSE(ControlGroup::KillAbandoned(folder.Path().string()));
    EXPECT_FALSE(boost::filesystem::exists(folder / "utility-job-abandoned"));
    EXPECT_TRUE(boost::filesystem::exists(folder / "utility-job-held"));
    EXPECT_TRUE(boost::filesystem::exists(folder / "other-job"));
    ::close(held);
    EXPECT_TRUE(ControlGroup::KillAbandoned(folder.Path().string()));
    EXPECT_FALSE(boost::filesystem::exists(folder / "utility-job-held"));
}

TEST(ControlGroupTest, AbandonedGroupIsToldToKillAndAFolderWithFilesStays)
{
    const TemporaryFolder folder;
    boost::filesystem::create_directories(folder / "utility-job-1");
    const boost::filesystem::path kill = folder.File("utility-job-1/cgroup.kill", "");
    EXPECT_TRUE(ControlGroup::KillAbandoned(folder.Path().string()));
    EXPECT_EQ(TemporaryFolder::BytesOf(kill), "1");
}
