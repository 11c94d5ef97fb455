#include "utility/system/ExeFile.h"

#include "tests/support/FileOfBytes.h"
#include "tests/support/GuardedText.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/framework/FileException.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <fstream>
#include <string>
#include <type_traits>

using support::FileOfBytes;
using support::GuardedText;

namespace
{

constexpr DWORD allOnes = 0xFFFFFFFF;

constexpr std::size_t dosHeaderSize = 64;
constexpr std::size_t relocationsAt = 24;
constexpr std::size_t secondaryHeaderAt = 60;
constexpr std::size_t fileHeaderSize = 20;

template <class Value>
void Put(std::string& bytes, std::size_t at, Value value)
{
    std::memcpy(&bytes.at(at + sizeof(value) - 1) - (sizeof(value) - 1), &value, sizeof(value));
}

/// A DOS header that names another one at an offset, and what stands behind it.
std::string Executable(std::uint32_t secondaryHeader, const std::string& behind = "")
{
    std::string bytes(dosHeaderSize, '\0');
    Put(bytes, 0, std::uint16_t{0x5A4D});
    Put(bytes, relocationsAt, std::uint16_t{0x40});
    Put(bytes, secondaryHeaderAt, secondaryHeader);
    return bytes + behind;
}

/// The signature and a file header whose fields all differ, in each byte.
const std::string fileHeader("PE\0\0"
                             "\x01\x82\x03\x84\x05\x06\x07\x88\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10\x11\x12\x13\x94",
                             4 + fileHeaderSize);

/// What classifying these bytes gives, from memory with nothing readable around it.
template <class File = CExeFile>
struct FileIn
{
    explicit FileIn(const std::string& bytes, GuardedText::Touches touches = GuardedText::Touches::pageBehind)
        : guarded(bytes, touches), files({guarded.First(), bytes.size()}), file(L"any")
    {
    }

    const GuardedText guarded;
    const FileOfBytes files;
    File file;
};

void ExpectFile(const std::string& bytes, CExeFile::errExeFile error, DWORD offset, CExeFile::ExeType type)
{
    for (const auto touches : {GuardedText::Touches::pageBehind, GuardedText::Touches::pageInFront})
    {
        const FileIn<> in(bytes, touches);
        EXPECT_EQ(in.file.GetErrorType(), error);
        EXPECT_EQ(in.file.GetSecondaryHeaderOffset(), offset);
        EXPECT_EQ(in.file.GetExeType(), type);
        EXPECT_EQ(FileIn<CPEExeFile>(bytes, touches).file.IsValid(), type == CExeFile::exeTypePE);
    }
}

void ExpectInvalid(const std::string& bytes)
{
    ExpectFile(bytes, CExeFile::errExeFileInvalid, allOnes, CExeFile::exeTypeUnknown);
}

void ExpectType(const std::string& bytes, DWORD offset, CExeFile::ExeType type)
{
    ExpectFile(bytes, CExeFile::errExeFileNone, offset, type);
}

}

TEST(ExeFileTest, HasNoVirtualOperations)
{
    static_assert(!std::is_polymorphic_v<CPEExeFile>);
    static_assert(std::is_base_of_v<CExeFile, CPEExeFile> && std::is_base_of_v<CMemoryMappedFile, CExeFile>);
    static_assert(sizeof(CExeFile::errExeFile) == 4 && sizeof(CExeFile::ExeType) == 4);
}

TEST(ExeFileTest, ValuesOfErrorsAndTypesAreFixed)
{
    static_assert(CExeFile::errExeFileNone == 0 && CExeFile::errExeFileInvalid == 2);
    static_assert(CExeFile::exeTypeUnknown == 0 && CExeFile::exeTypeDos == 1 && CExeFile::exeTypeNE == 2);
    static_assert(CExeFile::exeTypeLE == 3 && CExeFile::exeTypeXE == 4 && CExeFile::exeTypePE == 5);
}

TEST(ExeFileTest, FileOf63BytesIsInvalid)
{
    ExpectInvalid(Executable(0).substr(0, 63));
    ExpectType(Executable(0), 0, CExeFile::exeTypeUnknown);
}

TEST(ExeFileTest, FileWithoutTheDosSignatureIsInvalid)
{
    for (const char* begin : {"ZM", "MY", "LZ",
                              "\x7F"
                              "ELF"})
        ExpectInvalid(begin + Executable(64, fileHeader).substr(std::strlen(begin)));
}

TEST(ExeFileTest, EmptyFileIsInvalid)
{
    const support::TemporaryFolder folder;
    const CPEExeFile file(folder.File("empty.exe", ""));
    EXPECT_EQ(file.GetErrorType(), CExeFile::errExeFileInvalid);
    EXPECT_EQ(file.GetExeType(), CExeFile::exeTypeUnknown);
    EXPECT_EQ(file.GetSecondaryHeaderOffset(), allOnes);
    EXPECT_FALSE(file.IsValid());
    EXPECT_FALSE(file.CMemoryMappedFile::IsValid());
}

TEST(ExeFileTest, MissingFileThrows)
{
    const support::TemporaryFolder folder;
    for (const auto& path : {folder / "missing.exe", folder.Path()})
    {
        try
        {
            const CPEExeFile file(path);
            ADD_FAILURE() << path;
        }
        catch (CFileException* failure)
        {
            EXPECT_EQ(failure->m_cause,
                      path == folder.Path() ? CFileException::accessDenied : CFileException::fileNotFound);
            failure->Delete();
        }
    }
}

TEST(ExeFileTest, FileIsNamedByWideTextOrByAPath)
{
    const support::TemporaryFolder folder;
    const auto path = folder.File("a.exe", Executable(65, "." + fileHeader));
    const std::wstring wide = utility::platform::WideFromPath(path);
    for (const CExeFile::ExeType type :
         {CExeFile(path).GetExeType(), CExeFile(wide).GetExeType(), CExeFile(wide.c_str()).GetExeType()})
        EXPECT_EQ(type, CExeFile::exeTypePE);
    for (const int machine :
         {CPEExeFile(path).GetMachine(), CPEExeFile(wide).GetMachine(), CPEExeFile(wide.c_str()).GetMachine()})
        EXPECT_EQ(machine, 0x8201);
}

TEST(ExeFileTest, RelocationsInsideTheDosHeaderMakeADosProgram)
{
    for (const std::uint16_t offset : std::to_array<std::uint16_t>({0, 0x1C, 0x3F}))
    {
        std::string bytes = Executable(64, fileHeader);
        Put(bytes, relocationsAt, offset);
        ExpectType(bytes, allOnes, CExeFile::exeTypeDos);
    }
}

TEST(ExeFileTest, RelocationsBehindTheDosHeaderAreFollowedByAnother)
{
    for (const std::uint16_t offset : std::to_array<std::uint16_t>({0x40, 0x41, 0x8000, 0xFFFF}))
    {
        std::string bytes = Executable(64, fileHeader);
        Put(bytes, relocationsAt, offset);
        ExpectType(bytes, 64, CExeFile::exeTypePE);
    }
}

TEST(ExeFileTest, OffsetBeyondTheFileIsNone)
{
    for (const std::uint32_t beyond : {65u, 66u, 0x7FFFFFFFu})
        ExpectType(Executable(beyond), allOnes, CExeFile::exeTypeUnknown);
}

TEST(ExeFileTest, OffsetOfTheEndIsGivenThoughNothingIsThere)
{
    ExpectType(Executable(64), 64, CExeFile::exeTypeUnknown);
}

TEST(ExeFileTest, NegativeOffsetIsDeliberatelyGivenAndNothingIsReadThere)
{
    for (const std::uint32_t negative : {0x80000000u, 0x80000040u, 0xFFFFFFC0u, 0xFFFFFFFEu, 0xFFFFFFFFu})
        ExpectType(Executable(negative, fileHeader), negative, CExeFile::exeTypeUnknown);
}

TEST(ExeFileTest, SignatureOfTheSecondHeaderIsTheType)
{
    ExpectType(Executable(64, "NE"), 64, CExeFile::exeTypeNE);
    ExpectType(Executable(64, "LE"), 64, CExeFile::exeTypeLE);
    ExpectType(Executable(64, "XE"), 64, CExeFile::exeTypeXE);
    ExpectType(Executable(64, std::string("PE\0\0", 4)), 64, CExeFile::exeTypePE);
    ExpectType(Executable(64, "NE and more"), 64, CExeFile::exeTypeNE);
    ExpectType(Executable(67, "...LE"), 67, CExeFile::exeTypeLE);
    for (const char* other : {"EN", "NF", "LX", "MZ", "PE..", "EP"})
        ExpectType(Executable(64, other), 64, CExeFile::exeTypeUnknown);
    ExpectType(Executable(64, std::string("PE\0\1", 4)), 64, CExeFile::exeTypeUnknown);
    ExpectType(Executable(64, std::string("PE\1\0", 4)), 64, CExeFile::exeTypeUnknown);
}

TEST(ExeFileTest, SignatureThatTheFileCutsOffIsNone)
{
    ExpectType(Executable(64, "N"), 64, CExeFile::exeTypeUnknown);
    ExpectType(Executable(64, "P"), 64, CExeFile::exeTypeUnknown);
    ExpectType(Executable(64, "PE"), 64, CExeFile::exeTypeUnknown);
    ExpectType(Executable(64, std::string("PE\0", 3)), 64, CExeFile::exeTypeUnknown);
}

TEST(ExeFileTest, SecondHeaderMayBeInsideTheFirst)
{
    ExpectType(Executable(0), 0, CExeFile::exeTypeUnknown);
    std::string bytes = Executable(40, "");
    bytes.replace(40, fileHeader.size(), fileHeader.substr(0, 20) + std::string("\x28\0\0\0", 4));
    ExpectType(bytes, 40, CExeFile::exeTypePE);
}

TEST(ExeFileTest, CopySharesTheView)
{
    const FileIn<CPEExeFile> in(Executable(64, fileHeader));
    const CPEExeFile copy(in.file);
    FileIn<CPEExeFile> assigned(Executable(64));
    EXPECT_FALSE(assigned.file.IsValid());
    assigned.file = in.file;
    for (const CPEExeFile& each : {copy, assigned.file})
    {
        EXPECT_EQ(each.GetBase(), in.file.GetBase());
        EXPECT_EQ(each.GetErrorType(), CExeFile::errExeFileNone);
        EXPECT_EQ(each.GetSecondaryHeaderOffset(), 64u);
        EXPECT_EQ(each.GetExeType(), CExeFile::exeTypePE);
        EXPECT_TRUE(each.IsValid());
        EXPECT_EQ(each.GetMachine(), 0x8201u);
    }
}

TEST(PEExeFileTest, FieldsAreThoseOfTheFileHeader)
{
    for (const std::size_t gap : {0, 1, 7, 4096})
    {
        const FileIn<CPEExeFile> in(
            Executable(static_cast<std::uint32_t>(64 + gap), std::string(gap, '.') + fileHeader));
        ASSERT_TRUE(in.file.IsValid());
        EXPECT_EQ(in.file.GetMachine(), 0x8201u);
        EXPECT_EQ(in.file.GetNumberOfSections(), 0x8403u);
        EXPECT_EQ(in.file.GetTimeDateStamp(), 0x88070605u);
        EXPECT_EQ(in.file.GetCharacteristics(), 0x9413u);
    }
}

TEST(PEExeFileTest, FieldsOfOtherFilesAreZero)
{
    for (const std::string& bytes :
         {Executable(64, "NE" + fileHeader), std::string("no executable"), Executable(0xFFFFFFFC)})
    {
        const FileIn<CPEExeFile> in(bytes);
        EXPECT_FALSE(in.file.IsValid());
        EXPECT_EQ(in.file.GetMachine(), 0u);
        EXPECT_EQ(in.file.GetNumberOfSections(), 0u);
        EXPECT_EQ(in.file.GetTimeDateStamp(), 0u);
        EXPECT_EQ(in.file.GetCharacteristics(), 0u);
    }
}

TEST(PEExeFileTest, CutAtEveryByteItHasTheFieldsThatAreWhole)
{
    const std::string whole = Executable(70, "......" + fileHeader);
    const std::size_t headerAt = 74;
    for (std::size_t size = 1; size <= whole.size(); ++size)
    {
        SCOPED_TRACE(size);
        const FileIn<CPEExeFile> in(whole.substr(0, size));
        EXPECT_EQ(in.file.GetErrorType(), size < 64 ? CExeFile::errExeFileInvalid : CExeFile::errExeFileNone);
        EXPECT_EQ(in.file.GetSecondaryHeaderOffset(), size < 70 ? allOnes : 70u);
        EXPECT_EQ(in.file.IsValid(), size >= headerAt);
        EXPECT_EQ(in.file.GetMachine(), size < headerAt + 2 ? 0u : 0x8201u);
        EXPECT_EQ(in.file.GetNumberOfSections(), size < headerAt + 4 ? 0u : 0x8403u);
        EXPECT_EQ(in.file.GetTimeDateStamp(), size < headerAt + 8 ? 0u : 0x88070605u);
        EXPECT_EQ(in.file.GetCharacteristics(), size < headerAt + 20 ? 0u : 0x9413u);
    }
}

TEST(PEExeFileTest, ClosedFileHasNoFields)
{
    FileIn<CPEExeFile> in(Executable(64, fileHeader));
    EXPECT_TRUE(in.file.Close(0));
    EXPECT_TRUE(in.file.IsValid());
    EXPECT_EQ(in.file.GetExeType(), CExeFile::exeTypePE);
    EXPECT_EQ(in.file.GetMachine(), 0u);
    EXPECT_EQ(in.file.GetTimeDateStamp(), 0u);
}

TEST(PEExeFileTest, ReadsAFileOnTheDisk)
{
    // One that fills its page, and one that ends behind the machine.
    const support::TemporaryFolder folder;
    const std::string page = Executable(4096 - 24, std::string(4096 - 64 - 24, '.') + fileHeader);
    ASSERT_EQ(page.size(), 4096u);
    const CPEExeFile whole(folder.File("whole.exe", page));
    EXPECT_EQ(whole.GetCharacteristics(), 0x9413u);
    const CPEExeFile cut(folder.File("cut.exe", Executable(64, fileHeader.substr(0, 6))));
    EXPECT_EQ(cut.GetMachine(), 0x8201u);
    EXPECT_EQ(cut.GetNumberOfSections(), 0u);
}

namespace
{

struct RealExecutable
{
    const char* name;
    const char* file;
    DWORD offset;
    CExeFile::ExeType type;
};

class RealExecutableTest : public testing::TestWithParam<RealExecutable>
{
};

}

// As xxd shows them: the words at 24 are 0x1E, 0x20, 0x20 and 0x40, and the last has "NE" where the offset at 60
// points.
TEST_P(RealExecutableTest, IsOfItsType)
{
    if (std::string(UTILITY_TEST_DATA).empty())
        GTEST_SKIP() << "UTILITY_TEST_DATA is empty";
    const CPEExeFile file(boost::filesystem::path(UTILITY_TEST_DATA) / "exe" / GetParam().file);
    EXPECT_EQ(file.GetErrorType(), CExeFile::errExeFileNone);
    EXPECT_EQ(file.GetSecondaryHeaderOffset(), GetParam().offset);
    EXPECT_EQ(file.GetExeType(), GetParam().type);
    EXPECT_FALSE(file.IsValid());
}

INSTANTIATE_TEST_SUITE_P(Files, RealExecutableTest,
                         testing::Values(RealExecutable{"C2", "mz-C2.EXE", allOnes, CExeFile::exeTypeDos},
                                         RealExecutable{"Sort", "mz-SORT.EXE", allOnes, CExeFile::exeTypeDos},
                                         RealExecutable{"Dos32a", "dos32a-dos32a.exe", allOnes, CExeFile::exeTypeDos},
                                         RealExecutable{"Lib", "ne-LIB.EXE", 0x2CC7, CExeFile::exeTypeNE}),
                         [](const auto& each) { return each.param.name; });

TEST(PEExeFileTest, ReadsAModuleOfResources)
{
    // objdump -p: x86-64, no time, executable, line numbers and symbols stripped, large addresses, a library.
    const CPEExeFile file(boost::filesystem::path(UTILITY_TEST_MODULES) / "WholeVersion.dll");
    ASSERT_TRUE(file.IsValid());
    EXPECT_EQ(file.GetSecondaryHeaderOffset(), 0x80u);
    EXPECT_EQ(file.GetMachine(), 0x8664u);
    EXPECT_EQ(file.GetTimeDateStamp(), 0u);
    EXPECT_EQ(file.GetCharacteristics(), 0x2226u);
}

TEST(PEExeFileTest, ReadsTheModulesOfWine)
{
    const boost::filesystem::path folder = "/usr/lib/x86_64-linux-gnu/wine/x86_64-windows";
    boost::system::error_code ignored;
    if (!boost::filesystem::is_directory(folder, ignored))
        GTEST_SKIP() << "There is no Wine where Debian has it";
    int libraries = 0;
    for (const auto& entry : boost::filesystem::directory_iterator(folder))
    {
        if (entry.path().extension() != ".dll")
            continue;
        SCOPED_TRACE(entry.path());
        const CPEExeFile file(entry.path());
        ASSERT_TRUE(file.IsValid());
        std::array<char, 512> bytes{};
        std::ifstream(entry.path().string(), std::ios::binary).read(bytes.data(), bytes.size());
        const auto at = [&bytes](std::size_t offset, auto value)
        {
            std::memcpy(&value, &bytes.at(offset), sizeof(value));
            return value;
        };
        const auto header = at(60, DWORD{});
        EXPECT_EQ(file.GetSecondaryHeaderOffset(), header);
        EXPECT_EQ(file.GetMachine(), 0x8664u);
        EXPECT_EQ(file.GetNumberOfSections(), at(header + 6, std::uint16_t{}));
        EXPECT_EQ(file.GetTimeDateStamp(), at(header + 8, DWORD{}));
        EXPECT_EQ(file.GetCharacteristics(), at(header + 22, std::uint16_t{}));
        EXPECT_TRUE(file.GetCharacteristics() & 0x2000);
        ++libraries;
    }
    EXPECT_GT(libraries, 100);
}
