#include "examples/iges/Picture.h"

#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iterator>

namespace
{

using SaveDrawing = bool (*)(const boost::filesystem::path&, const iges::Wireframe&, const std::wstring&,
                             const iges::IsStopped&);

struct SaveFailureCase
{
    const char* name;
    SaveDrawing save;
    const char* file;
    const char* call;
    int error;
};

class IgesSaveFailureTest : public testing::TestWithParam<SaveFailureCase>
{
};

TEST_P(IgesSaveFailureTest, LeavesTheOlderFileAndNothingElse)
{
    const support::TemporaryFolder folder;
    const boost::filesystem::path path = folder.File(GetParam().file, "old");
    bool hasThrown = false;
    {
        const support::FailingCall failing(GetParam().call, GetParam().error);
        try
        {
            GetParam().save(path, iges::Wireframe(1.0), L"part", [] { return false; });
        }
        catch (CException* failure)
        {
            failure->Delete();
            hasThrown = true;
        }
        EXPECT_TRUE(failing.HasFailed());
    }
    EXPECT_TRUE(hasThrown);
    EXPECT_EQ(folder.BytesOf(path), "old");
    EXPECT_EQ(
        std::distance(boost::filesystem::directory_iterator(folder.Path()), boost::filesystem::directory_iterator()),
        1);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, IgesSaveFailureTest,
    testing::Values(SaveFailureCase{"PictureFlushed", iges::SavePicture, "part.svg", "fsync", EIO},
                    SaveFailureCase{"PictureWritten", iges::SavePicture, "part.svg", "write", ENOSPC},
                    SaveFailureCase{"PictureCutOff", iges::SavePicture, "part.svg", "ftruncate", EIO},
                    SaveFailureCase{"SceneFlushed", iges::SaveScene, "part.wrl", "fsync", EIO},
                    SaveFailureCase{"SceneWritten", iges::SaveScene, "part.wrl", "write", ENOSPC},
                    SaveFailureCase{"CompressedSceneFlushed", iges::SaveScene, "part.wrl.gz", "fsync", EIO}),
    [](const auto& test) { return std::string(test.param.name); });

}
