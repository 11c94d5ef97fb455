#include "utility/files/MemoryMappedFile.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

TEST(MemoryMappedFileOpen, MapsTheBytesOfAFile)
{
    const support::TemporaryFolder folder;
    CMemoryMappedFile file;
    ASSERT_TRUE(file.Open(folder.File("a", "twelve bytes")));
    EXPECT_EQ(std::string(static_cast<const char*>(file.GetBase()), file.GetFileSize()), "twelve bytes");
}
