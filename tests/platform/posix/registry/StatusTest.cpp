#include "utility/platform/posix/registry/Status.h"

#include <gtest/gtest.h>

#include <sqlite3.h>

namespace
{

struct ResultAndStatus
{
    const char* name;
    int result;
    LSTATUS status;
};

class StatusTest : public ::testing::TestWithParam<ResultAndStatus>
{
};

}

TEST_P(StatusTest, IsWhatAResultMeansToTheRegistry)
{
    EXPECT_EQ(utility::platform::posix::StatusOf(GetParam().result, nullptr), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Results, StatusTest,
                         ::testing::Values(ResultAndStatus{"Done", SQLITE_DONE, 0},
                                           ResultAndStatus{"ReadOnly", SQLITE_READONLY_DIRECTORY, 5},
                                           ResultAndStatus{"NoMemory", SQLITE_NOMEM, 8},
                                           ResultAndStatus{"TooBig", SQLITE_TOOBIG, 87},
                                           ResultAndStatus{"Full", SQLITE_FULL, 112},
                                           ResultAndStatus{"Busy", SQLITE_BUSY_SNAPSHOT, 170},
                                           ResultAndStatus{"OthersFirstEachTime", SQLITE_PROTOCOL, 170},
                                           ResultAndStatus{"Damaged", SQLITE_CORRUPT, 1009},
                                           ResultAndStatus{"NoDatabase", SQLITE_NOTADB, 1009},
                                           ResultAndStatus{"ReadFailed", SQLITE_IOERR_READ, 1016},
                                           ResultAndStatus{"NotOpenedForNoReasonOfTheSystems", SQLITE_CANTOPEN, 1016}),
                         [](const auto& tested) { return tested.param.name; });
