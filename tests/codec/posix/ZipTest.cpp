#include "utility/codec/Zip.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thorough.h"
#include "utility/platform/formats/ZipDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <new>
#include <random>
#include <sched.h>
#include <string>
#include <string_view>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

using boost::filesystem::path;
using support::FailingCall;

namespace
{

/// The output of a command, and the number it ended with ahead of that.
std::string OutputOf(const std::string& command)
{
    std::string output;
    std::FILE* const pipe = ::popen((command + " 2>&1").c_str(), "r");
    char part[4096];
    for (std::size_t size; (size = std::fread(part, 1, sizeof(part), pipe)) > 0;)
        output.append(part, size);
    const int status = ::pclose(pipe);
    return std::to_string(WEXITSTATUS(status)) + '\n' + output;
}

bool Has(const char* program) { return std::system((std::string("command -v >/dev/null ") + program).c_str()) == 0; }

std::string Quoted(const path& file) { return '\'' + file.native() + '\''; }

/// Bytes that cannot be packed.
std::string Noise(std::size_t size)
{
    std::string noise(size, '\0');
    std::minstd_rand random;
    for (char& each : noise)
        each = static_cast<char>(random() >> 8);
    return noise;
}

/// What Python's zipfile reads, behind a test of all checksums: a line for each entry, in the form given.
std::string ReadByPython(const path& archive, const std::string& form)
{
    return OutputOf("python3 -c \"import sys, zipfile\nz = zipfile.ZipFile(sys.argv[1])\nassert z.testzip() is None\n"
                    "for i in z.infolist(): print(" +
                    form + ")\" " + Quoted(archive));
}

void SetTimeOfChange(const path& file, std::time_t seconds)
{
    const timespec times[] = {{seconds, 0}, {seconds, 0}};
    ::utimensat(AT_FDCWD, file.c_str(), times, 0);
}

/// Has a disk of its own at a new folder, for this process alone. False if the user may not have one.
bool MountDisk(const path& folder, const char* options)
{
    ::mkdir(folder.c_str(), 0777);
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("none", folder.c_str(), "tmpfs", 0, options) == 0;
}

constexpr int noDisk = 99;
constexpr const char* noDiskReason = "The user lacks the right to mount file systems";

class PosixZipTest : public ::testing::Test
{
protected:
    std::ptrdiff_t Entries() const { return std::distance(boost::filesystem::directory_iterator(m_folder.Path()), {}); }
    std::string Bytes() const { return support::TemporaryFolder::BytesOf(m_archive); }

    /// Whether this file gets into the archive while something is done. It is done when what comes of the beginning of
    /// the file gets into the new archive, long ahead of its end.
    template <class Work>
    bool IsPackedWhile(const path& file, Work work) const
    {
        const support::AheadOfCall midst("pwrite", work);
        const bool isPacked = Zip::ZipFiles(m_archive, {file});
        EXPECT_TRUE(midst.IsDone());
        return isPacked;
    }

    /// The names in the archive, in their order.
    std::vector<std::string> Names() const
    {
        using namespace utility::platform::formats;
        const std::string bytes = Bytes();
        const auto all = std::as_bytes(std::span(bytes));
        const auto end = FindZipEnd(all.last(std::min<std::size_t>(all.size(), longestZipEnd)), all.size());
        std::vector<std::string> names;
        if (!end)
            return names;
        const auto entries = ZipEntries(BytesAt(all, end->directoryPosition, end->directorySize), end->entries);
        for (const ZipEntry& entry : entries.value())
            names.emplace_back(entry.name);
        return names;
    }

    /// That this fails, and that nothing of it stays but what was there.
    void ExpectFailure(const std::set<path>& files) const
    {
        const std::string before = Bytes();
        const auto entries = Entries();
        const auto descriptors = support::OpenDescriptors();
        EXPECT_FALSE(Zip::ZipFiles(m_archive, files));
        EXPECT_EQ(Bytes(), before);
        EXPECT_EQ(Entries(), entries);
        EXPECT_EQ(support::OpenDescriptors(), descriptors);
    }

    const support::TemporaryFolder m_folder;
    const path m_archive = m_folder / "a.zip";
    const path m_plate = m_folder.File("plate.igs", std::string(100000, 'S'));
    const path m_moves = m_folder.File("moves.nc", "N10 G01 X12\n");
};

class PosixZipReadBackTest : public PosixZipTest
{
protected:
    void SetUp() override
    {
        for (const char* program : {"unzip", "python3"})
            if (!Has(program))
                GTEST_SKIP() << "The machine lacks " << program;
    }
};

}

TEST_F(PosixZipReadBackTest, OtherProgramsReadItBack)
{
    const path empty = m_folder.File("empty", "");
    const path noise = m_folder.File("noise", Noise(3000000));
    const path named = m_folder.File("Prüf 鉄.nc", "named");
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_plate, m_moves, empty, noise, named}));
    EXPECT_EQ(
        ReadByPython(m_archive, "i.filename, i.file_size, i.compress_type, i.flag_bits & 0x800, i.extract_version"),
        "0\nPrüf 鉄.nc 5 8 2048 20\nempty 0 8 2048 20\nmoves.nc 12 8 2048 20\nnoise 3000000 8 2048 20\n"
        "plate.igs 100000 8 2048 20\n");
    const path out = m_folder / "out";
    const std::string unpacked = OutputOf("LC_ALL=C.UTF-8 unzip -q " + Quoted(m_archive) + " -d " + Quoted(out));
    EXPECT_EQ(unpacked, "0\n");
    EXPECT_EQ(std::distance(boost::filesystem::directory_iterator(out), {}), 5);
    for (const path& file : {m_plate, m_moves, empty, noise, named})
        EXPECT_TRUE(support::TemporaryFolder::BytesOf(out / file.filename()) == support::TemporaryFolder::BytesOf(file))
            << file;
    EXPECT_LT(Bytes().size(), 3003000u);
}

TEST_F(PosixZipReadBackTest, TimesAndPermissionsAreThoseOfTheFile)
{
    SetTimeOfChange(m_moves, 1700000001);
    SetTimeOfChange(m_plate, 1);
    ::chmod(m_moves.c_str(), 0640);
    ::chmod(m_plate.c_str(), 0755);
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_plate, m_moves}));
    EXPECT_EQ(ReadByPython(m_archive, "i.filename, oct(i.external_attr >> 16), i.create_system"),
              "0\nmoves.nc 0o100640 3\nplate.igs 0o100755 3\n");
    EXPECT_EQ(OutputOf("python3 -c \"import sys, zipfile\nprint(zipfile.ZipFile(sys.argv[1]).getinfo('plate.igs')"
                       ".date_time)\" " +
                       Quoted(m_archive)),
              "0\n(1980, 1, 1, 0, 0, 0)\n");
    const path out = m_folder / "out";
    ASSERT_EQ(OutputOf("unzip -q " + Quoted(m_archive) + " -d " + Quoted(out)), "0\n");
    struct stat status;
    ASSERT_EQ(::stat((out / "moves.nc").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1700000001);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
    ASSERT_EQ(::stat((out / "plate.igs").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1);
    EXPECT_EQ(status.st_mode & 0777, 0755u);
}

TEST_F(PosixZipReadBackTest, TimeIsLocalForThoseWhoReadNoOther)
{
    SetTimeOfChange(m_moves, 1700000001);
    support::Child child(
        [this]
        {
            ::setenv("TZ", "XYZ-5:30", 1);
            ::tzset();
            return Zip::ZipFiles(m_archive, {m_moves}) ? 0 : 1;
        });
    ASSERT_EQ(child.ExitCode(), 0);
    EXPECT_EQ(ReadByPython(m_archive, "i.date_time"), "0\n(2023, 11, 15, 3, 43, 20)\n");
}

TEST_F(PosixZipReadBackTest, TimeThatAnArchiveCannotHoldIsTheLatestThatItCan)
{
    SetTimeOfChange(m_moves, 2147483648);
    SetTimeOfChange(m_plate, 7258204800);
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves, m_plate}));
    EXPECT_EQ(ReadByPython(m_archive, "i.date_time[:2], i.extra"), "0\n(2038, 1) b''\n(2107, 12) b''\n");
}

TEST_F(PosixZipReadBackTest, UpdateReplacesWhatHasTheNameAndKeepsTheRest)
{
    const path other = m_folder.File("other.txt", "other");
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_plate, m_moves, other}));
    m_folder.File("moves.nc", "N20 M30\n");
    const path added = m_folder.File("added", "added");
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves, added}));
    EXPECT_EQ(Names(), (std::vector<std::string>{"other.txt", "plate.igs", "added", "moves.nc"}));
    EXPECT_EQ(ReadByPython(m_archive, "i.filename, z.read(i)[-9:]"),
              "0\nother.txt b'other'\nplate.igs b'SSSSSSSSS'\nadded b'added'\nmoves.nc b'N20 M30\\n'\n");
    EXPECT_EQ(OutputOf("unzip -tqq " + Quoted(m_archive)), "0\n");
    EXPECT_EQ(Bytes().find("N10"), std::string::npos);
}

TEST_F(PosixZipReadBackTest, ArchiveOfAnotherProgramIsUpdatedWithAllItHas)
{
    // Stored data, entries with data behind which their sizes stand, comments with zeros and what looks like an end,
    // something ahead of the archive, a folder, and names in it.
    const std::string made =
        OutputOf("python3 -c \"import io, sys, zipfile\n"
                 "class Unseekable(io.RawIOBase):\n"
                 "    def __init__(self, f): self.f = f\n"
                 "    def writable(self): return True\n"
                 "    def write(self, b): return self.f.write(b)\n"
                 "    def flush(self): self.f.flush()\n"
                 "with open(sys.argv[1], 'wb') as f:\n"
                 "    f.write(b'#!/bin/sh and more ahead of it')\n"
                 "    with zipfile.ZipFile(Unseekable(f), 'w') as z:\n"
                 "        z.writestr('folder/', b'')\n"
                 "        z.writestr('moves.nc', b'old moves')\n"
                 "        z.writestr('folder/moves.nc', b'moves in a folder', zipfile.ZIP_DEFLATED)\n"
                 "        i = zipfile.ZipInfo('with comment'); i.comment = b'of the entry'; i.extra = b'XYab12'[:2] + "
                 "b'\\2\\0ab'\n"
                 "        i.external_attr = 0o100600 << 16\n"
                 "        z.writestr(i, b'stored' * 100)\n"
                 "        z.writestr('lzma', b'packed otherwise' * 100, zipfile.ZIP_LZMA)\n"
                 "        z.comment = b'a comment\\0 of the archive'\n\" " +
                 Quoted(m_archive));
    ASSERT_EQ(made, "0\n");
    const std::string form = "i.filename, z.read(i)[-17:], i.flag_bits & 8, i.compress_type, i.comment, i.extra[:6], "
                             "i.external_attr >> 16, z.comment";
    // unzip does not know all ways of packing, and warns of what is ahead.
    const std::string test = "(unzip -tqq " + Quoted(m_archive) + " -x lzma >/dev/null)";
    EXPECT_EQ(OutputOf(test), "1\n");
    const std::string before = ReadByPython(m_archive, form);
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
    std::string after = ReadByPython(m_archive, form);
    const auto old = before.find("moves.nc");
    std::string expected = before;
    expected.erase(old, before.find('\n', old) + 1 - old);
    const auto added = after.rfind("moves.nc");
    EXPECT_NE(after.find("N10 G01", added), std::string::npos) << after;
    after.erase(added);
    EXPECT_EQ(after, expected);
    EXPECT_EQ(Bytes().substr(0, 30), "#!/bin/sh and more ahead of it");
    EXPECT_EQ(Bytes().find("old moves"), std::string::npos);
    EXPECT_EQ(OutputOf(test), "1\n");
}

TEST_F(PosixZipReadBackTest, EncryptedEntryStaysAndCanBeRead)
{
    // As the format's first way of encryption has it: a header of 12 bytes, of which the last tells a wrong password.
    const std::string made =
        OutputOf("python3 -c \"import struct, sys, zipfile, zlib\n"
                 "text = b'secret moves'\n"
                 "crc = zlib.crc32(text)\n"
                 "step = lambda c, b: zlib.crc32(bytes([b]), c ^ 0xffffffff) ^ 0xffffffff\n"
                 "keys = [0x12345678, 0x23456789, 0x34567890]\n"
                 "def update(b):\n"
                 "    keys[0] = step(keys[0], b)\n"
                 "    keys[1] = ((keys[1] + (keys[0] & 0xff)) * 134775813 + 1) & 0xffffffff\n"
                 "    keys[2] = step(keys[2], keys[1] >> 24)\n"
                 "for b in b'password': update(b)\n"
                 "data = bytearray()\n"
                 "for b in bytes(11) + bytes([crc >> 24]) + text:\n"
                 "    k = keys[2] | 2\n"
                 "    data.append(b ^ (k * (k ^ 1) >> 8 & 0xff))\n"
                 "    update(b)\n"
                 "numbers = struct.pack('<5H3I2H', 20, 1, 0, 0, 33, crc, len(data), len(text), 6, 0)\n"
                 "entry = b'PK\\3\\4' + numbers + b'secret' + data\n"
                 "record = b'PK\\1\\2\\24\\3' + numbers + bytes(14) + b'secret'\n"
                 "end = struct.pack('<4s4H2IH', b'PK\\5\\6', 0, 0, 1, 1, len(record), len(entry), 0)\n"
                 "open(sys.argv[1], 'wb').write(entry + record + end)\n\" " +
                 Quoted(m_archive));
    ASSERT_EQ(made, "0\n");
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
    EXPECT_EQ(OutputOf("unzip -p -P password " + Quoted(m_archive)), "0\nsecret movesN10 G01 X12\n");
    EXPECT_EQ(OutputOf("python3 -c \"import sys, zipfile\nz = zipfile.ZipFile(sys.argv[1])\n"
                       "print(z.read('secret', b'password'), z.namelist())\" " +
                       Quoted(m_archive)),
              "0\nb'secret moves' ['secret', 'moves.nc']\n");
}

TEST_F(PosixZipReadBackTest, ArchiveOfManyEntriesIsUpdated)
{
    ASSERT_EQ(OutputOf("python3 -c \"import sys, zipfile\nwith zipfile.ZipFile(sys.argv[1], 'w') as z:\n"
                       "    for i in range(70000): z.writestr(str(i), b'')\" " +
                       Quoted(m_archive)),
              "0\n");
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
    EXPECT_EQ(OutputOf("python3 -c \"import sys, zipfile\nz = zipfile.ZipFile(sys.argv[1])\n"
                       "print(len(z.infolist()), z.namelist()[0], z.read('moves.nc'))\" " +
                       Quoted(m_archive)),
              "0\n70001 0 b'N10 G01 X12\\n'\n");
}

TEST_F(PosixZipReadBackTest, LongFileIsPackedAndItsArchiveUpdated)
{
    // In the long tests of more than 4 GB, which headers tell in another way.
    const std::uint64_t length = support::Thorough() ? (std::uint64_t(1) << 32) + 5 : 1 << 25;
    const path file = m_folder.File("long", "begin");
    support::TemporaryFolder::WriteAt(file, length - 3, "end");
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {file}));
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
    EXPECT_EQ(ReadByPython(m_archive, "i.filename, i.file_size, i.create_system, oct(i.external_attr >> 16)"),
              "0\nlong " + std::to_string(length) + " 3 0o100644\nmoves.nc 12 3 0o100644\n");
    EXPECT_EQ(OutputOf("unzip -tqq " + Quoted(m_archive)), "0\n");
}

TEST_F(PosixZipReadBackTest, LongArchiveIsUpdated)
{
    // In the long tests of more than 4 GB: the last entry and the directory are behind that.
    const std::string megabytes = support::Thorough() ? "4100" : "10";
    ASSERT_EQ(OutputOf("python3 -c \"import sys, zipfile\nwith zipfile.ZipFile(sys.argv[1], 'w') as z:\n"
                       "    z.writestr('moves.nc', b'old')\n"
                       "    with z.open('stored', 'w', force_zip64=True) as f:\n"
                       "        for i in range(" +
                       megabytes +
                       "): f.write(bytes(1 << 20))\n"
                       "    z.writestr('behind', b'kept')\" " +
                       Quoted(m_archive)),
              "0\n");
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
    EXPECT_EQ(ReadByPython(m_archive, "i.filename, i.file_size >> 20, i.create_system"),
              "0\nstored " + megabytes + " 3\nbehind 0 3\nmoves.nc 0 3\n");
    EXPECT_EQ(OutputOf("unzip -tqq " + Quoted(m_archive)), "0\n");
}

TEST_F(PosixZipReadBackTest, NameThatIsNoUtf8IsKeptAsItIsAndNotMarked)
{
    const path named = m_folder.File("Pr\xFC"
                                     "fung",
                                     "Latin-1");
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {named}));
    EXPECT_EQ(ReadByPython(m_archive,
                           "i.filename.encode('cp437') == bytes([0x50, 0x72, 0xfc]) + b'fung', i.flag_bits & "
                           "0x800"),
              "0\nTrue 0\n");
}

TEST_F(PosixZipTest, ArchiveHasWhatTheUserMayReadAndNothingIsLeftBesideIt)
{
    const auto descriptors = support::OpenDescriptors();
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_plate, m_moves}));
    EXPECT_EQ(Entries(), 3);
    EXPECT_EQ(support::OpenDescriptors(), descriptors);
    struct stat archive;
    struct stat other;
    ASSERT_EQ(::stat(m_archive.c_str(), &archive), 0);
    ASSERT_EQ(::stat(m_moves.c_str(), &other), 0);
    EXPECT_EQ(archive.st_mode, other.st_mode);
    ::chmod(m_archive.c_str(), 0600);
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_plate}));
    ASSERT_EQ(::stat(m_archive.c_str(), &archive), 0);
    EXPECT_EQ(archive.st_mode & 0777, 0600u);
    EXPECT_EQ(Entries(), 3);
}

TEST_F(PosixZipTest, RelativeNamesAreInTheFolderOfTheArchive)
{
    EXPECT_TRUE(Zip::ZipFiles(m_archive, {"moves.nc"}));
    EXPECT_EQ(Names(), (std::vector<std::string>{"moves.nc"}));
    const path earlier = boost::filesystem::current_path();
    boost::filesystem::current_path(m_folder.Path());
    EXPECT_TRUE(Zip::ZipFiles("b.zip", {"moves.nc", "plate.igs"}));
    boost::filesystem::current_path(earlier);
    EXPECT_TRUE(boost::filesystem::exists(m_folder / "b.zip"));
}

TEST_F(PosixZipTest, FileNamedAsTheOptionIsAFile)
{
    m_folder.File("-UN=UTF8", "a file");
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {"-UN=UTF8"}));
    EXPECT_EQ(Names(), (std::vector<std::string>{"-UN=UTF8"}));
}

TEST_F(PosixZipTest, FoldersAndTheArchiveItselfAreLeftOut)
{
    boost::filesystem::create_directory(m_folder / "folder");
    EXPECT_FALSE(Zip::ZipFiles(m_archive, {m_folder / "folder"}));
    EXPECT_FALSE(boost::filesystem::exists(m_archive));
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_folder / "folder", m_moves}));
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_archive, m_plate}));
    EXPECT_EQ(Names(), (std::vector<std::string>{"moves.nc", "plate.igs"}));
    ExpectFailure({m_archive});
}

TEST_F(PosixZipTest, LinksAreFollowedAndHaveTheirOwnName)
{
    boost::filesystem::create_symlink(m_moves, m_folder / "link.nc");
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_folder / "link.nc"}));
    EXPECT_EQ(Names(), (std::vector<std::string>{"link.nc"}));
}

TEST_F(PosixZipTest, ArchiveThatIsALinkStaysOne)
{
    const path link = m_folder / "link.zip";
    boost::filesystem::create_symlink("a.zip", link);
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
    ASSERT_TRUE(Zip::ZipFiles(link, {m_plate}));
    EXPECT_TRUE(boost::filesystem::is_symlink(link));
    EXPECT_EQ(Names(), (std::vector<std::string>{"moves.nc", "plate.igs"}));
    EXPECT_EQ(Entries(), 4);
}

TEST_F(PosixZipTest, LinkToNowhereGivesItsPlaceToTheArchive)
{
    boost::filesystem::create_symlink("nowhere", m_archive);
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
    EXPECT_FALSE(boost::filesystem::is_symlink(m_archive));
    EXPECT_EQ(Names(), (std::vector<std::string>{"moves.nc"}));
}

TEST_F(PosixZipTest, WhatCannotBePackedLeavesTheArchiveAsItWas)
{
    boost::filesystem::create_directory(m_folder / "folder");
    const path same = m_folder / "folder/moves.nc";
    boost::filesystem::copy_file(m_moves, same);
    ::mkfifo((m_folder / "pipe").c_str(), 0666);
    boost::filesystem::create_symlink("nowhere", m_folder / "dangling");
    boost::filesystem::create_symlink("loop", m_folder / "loop");
    for (const bool exists : {false, true})
    {
        if (exists)
        {
            ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_plate}));
        }
        ExpectFailure({m_moves, m_folder / "missing"});
        ExpectFailure({m_moves, same});
        ExpectFailure({m_moves, "moves.nc"});
        for (const char* name : {"pipe", "dangling", "loop"})
            ExpectFailure({m_moves, m_folder / name});
        ExpectFailure({m_moves, "/dev/null"});
        ExpectFailure({m_moves, "/dev/zero"});
        ExpectFailure({m_moves, "/proc/self/status"});
        ExpectFailure({m_moves, m_folder / std::string(300, 'n').c_str()});
    }
}

TEST_F(PosixZipTest, WhatIsNoArchiveStaysAsItIs)
{
    for (const std::string& bytes : {std::string(), std::string("text"), std::string(100000, 'P')})
    {
        m_folder.File("a.zip", bytes);
        ExpectFailure({m_moves});
    }
    boost::filesystem::remove(m_archive);
    ::mkfifo(m_archive.c_str(), 0666);
    EXPECT_FALSE(Zip::ZipFiles(m_archive, {m_moves}));
    EXPECT_FALSE(Zip::ZipFiles("/dev/null", {m_moves}));
    EXPECT_FALSE(Zip::ZipFiles(m_folder.Path(), {m_moves}));
    EXPECT_FALSE(Zip::ZipFiles(m_folder / "missing/a.zip", {m_moves}));
    EXPECT_FALSE(Zip::ZipFiles("", {m_moves}));
    EXPECT_EQ(Entries(), 3);
}

TEST_F(PosixZipTest, ArchiveThatIsCutAnywhereStaysAsItIs)
{
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves, m_folder.File("b", "b")}));
    const std::string whole = Bytes();
    for (std::size_t size = 0; size < whole.size(); ++size)
    {
        m_folder.File("a.zip", whole.substr(0, size));
        ASSERT_FALSE(Zip::ZipFiles(m_archive, {m_moves})) << size;
        ASSERT_EQ(Bytes(), whole.substr(0, size));
    }
    EXPECT_EQ(Entries(), 4);
}

TEST_F(PosixZipTest, ArchiveWhoseEntriesLieWithinOthersOrNowhereStaysAsItIs)
{
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves, m_folder.File("b", "b")}));
    const std::string whole = Bytes();
    const std::size_t record = whole.find("PK\1\2");
    const struct
    {
        std::size_t at;
        int more;
    } changes[] = {{20, 100}, {42, 1}, {42, 100}, {45, 100}}; // of the packed size, and of the position
    for (const auto& [at, more] : changes)
    {
        std::string changed = whole;
        changed[record + at] = static_cast<char>(changed[record + at] + more);
        m_folder.File("a.zip", changed);
        ExpectFailure({m_moves});
    }
}

TEST_F(PosixZipTest, ArchiveThatIsChangedAtAnyByteStaysAsItIsOrIsUpdated)
{
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves, m_folder.File("b", "b")}));
    const std::string whole = Bytes();
    const int changes[] = {1, 0x80, 0xFF};
    int updated = 0;
    for (std::size_t at = 0; at < whole.size(); ++at)
        for (const int change : changes)
        {
            if (!support::Thorough() && change != changes[at % std::size(changes)])
                continue;
            std::string changed = whole;
            changed[at] = static_cast<char>(changed[at] ^ change);
            m_folder.File("a.zip", changed);
            const bool isUpdated = Zip::ZipFiles(m_archive, {m_moves});
            ASSERT_TRUE(isUpdated || Bytes() == changed) << at;
            ASSERT_TRUE(!isUpdated || Names().back() == "moves.nc") << at;
            updated += isUpdated ? 1 : 0;
        }
    EXPECT_GT(updated, 30); // of what stays as it is, whatever it says
    EXPECT_EQ(Entries(), 4);
}

TEST_F(PosixZipTest, DirectoryThatIsSaidToBeLongerThanItsEntriesCanBeTakesNoMemory)
{
    constexpr std::uint64_t length = 1000000000;
    m_folder.File("a.zip", "");
    support::TemporaryFolder::WriteAt(m_archive, length, utility::platform::formats::ZipEndOf(1, 0, length));
    support::Child child(
        [&]
        {
            const auto kilobytesAtMost = []
            {
                rusage usage;
                ::getrusage(RUSAGE_SELF, &usage);
                return usage.ru_maxrss;
            };
            const long before = kilobytesAtMost();
            if (Zip::ZipFiles(m_archive, {m_moves}))
                return 1;
            return kilobytesAtMost() - before < 100000 ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixZipTest, ArchiveWithoutEntriesIsUpdated)
{
    m_folder.File("a.zip", utility::platform::formats::ZipEndOf(0, 0, 0));
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
    EXPECT_EQ(Names(), (std::vector<std::string>{"moves.nc"}));
}

TEST_F(PosixZipTest, NamesThatDifferInCaseAreTwo)
{
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves, m_folder.File("Moves.nc", "other")}));
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_folder.File("MOVES.NC", "a third")}));
    EXPECT_EQ(Names(), (std::vector<std::string>{"Moves.nc", "moves.nc", "MOVES.NC"}));
}

TEST_F(PosixZipTest, FirstArchiveThatIsUpdatedToNothingButNewEntriesIsOne)
{
    for (int time = 0; time < 3; ++time)
    {
        ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
        EXPECT_EQ(Names(), (std::vector<std::string>{"moves.nc"}));
    }
}

TEST_F(PosixZipTest, AnySystemCallThatFailsLeavesTheArchiveAsItWas)
{
    for (const bool exists : {false, true})
    {
        if (exists)
        {
            ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_plate}));
        }
        for (const char* call : {"open", "fstat", "stat", "pread", "pwrite", "fsync"})
            for (int at = 1;; ++at)
            {
                SCOPED_TRACE(std::string(call) + ' ' + std::to_string(at));
                const std::string before = Bytes();
                const auto descriptors = support::OpenDescriptors();
                bool isDone = false;
                bool hasFailed = false;
                {
                    const FailingCall failing(call, EIO, at);
                    isDone = Zip::ZipFiles(m_archive, {m_moves});
                    hasFailed = failing.HasFailed();
                }
                ASSERT_EQ(support::OpenDescriptors(), descriptors);
                ASSERT_EQ(Entries(), Bytes().empty() ? 2 : 3);
                if (!hasFailed)
                {
                    EXPECT_TRUE(isDone);
                    break;
                }
                // Whether a flush is needed, and what an old file has that the new one has not, may be unknown.
                const bool isVital = call[0] == 'p' || call == std::string_view("fsync");
                EXPECT_FALSE(isDone && isVital);
                if (isDone)
                    EXPECT_EQ(Names().front(), exists ? "plate.igs" : "moves.nc");
                else
                    EXPECT_EQ(Bytes(), before);
                if (!exists)
                    boost::filesystem::remove(m_archive);
            }
        boost::filesystem::remove(m_archive);
    }
}

TEST_F(PosixZipTest, LackOfMemoryLeavesTheArchiveAsItWas)
{
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_plate}));
    const std::string before = Bytes();
    const auto descriptors = support::OpenDescriptors();
    for (int at = 1;; ++at)
    {
        const std::set<path> files = {m_moves};
        bool hasFailed = false;
        try
        {
            const FailingCall failing("operator new", ENOMEM, at);
            const bool isDone = Zip::ZipFiles(m_archive, files);
            hasFailed = failing.HasFailed();
            EXPECT_EQ(isDone, !hasFailed) << at;
            if (!hasFailed)
                break;
        }
        catch (const std::bad_alloc&)
        {
        }
        ASSERT_EQ(support::OpenDescriptors(), descriptors) << at;
        ASSERT_EQ(Entries(), 3) << at;
        if (Bytes() != before) // the last of it is only needed for what comes behind the swap
            break;
    }
    EXPECT_EQ(Names().front(), "plate.igs");
}

TEST_F(PosixZipTest, FullDiskLeavesTheArchiveAsItWas)
{
    support::Child child(
        [this]
        {
            const path disk = m_folder / "disk";
            if (!MountDisk(disk, "size=128k"))
                return noDisk;
            if (!Zip::ZipFiles(disk / "a.zip", {m_moves}))
                return 1;
            const std::string before = support::TemporaryFolder::BytesOf(disk / "a.zip");
            const path big = m_folder.File("noise", Noise(200000));
            if (Zip::ZipFiles(disk / "a.zip", {big}) || Zip::ZipFiles(disk / "b.zip", {big}))
                return 2;
            if (support::TemporaryFolder::BytesOf(disk / "a.zip") != before ||
                std::distance(boost::filesystem::directory_iterator(disk), {}) != 1)
                return 3;
            return Zip::ZipFiles(disk / "a.zip", {m_plate}) ? 0 : 4;
        });
    const int code = child.ExitCode();
    if (code == noDisk)
        GTEST_SKIP() << noDiskReason;
    EXPECT_EQ(code, 0);
}

TEST_F(PosixZipTest, FullDiskThatALinkLeadsToLeavesTheLinkAndTheArchive)
{
    support::Child child(
        [this]
        {
            const path disk = m_folder / "disk";
            if (!MountDisk(disk, "size=128k"))
                return noDisk;
            boost::filesystem::create_symlink("disk/a.zip", m_archive);
            if (!Zip::ZipFiles(disk / "a.zip", {m_moves}) || !Zip::ZipFiles(m_archive, {m_moves}))
                return 1;
            const std::string before = Bytes();
            const path big = m_folder.File("noise", Noise(200000));
            if (Zip::ZipFiles(m_archive, {big}))
                return 2;
            if (!boost::filesystem::is_symlink(m_archive) || Bytes() != before)
                return 3;
            return std::distance(boost::filesystem::directory_iterator(disk), {}) == 1 && Entries() == 5 ? 0 : 4;
        });
    const int code = child.ExitCode();
    if (code == noDisk)
        GTEST_SKIP() << noDiskReason;
    EXPECT_EQ(code, 0);
}

TEST_F(PosixZipTest, DiskWithoutRoomForAnotherFileLeavesTheArchiveAsItWas)
{
    support::Child child(
        [this]
        {
            const path disk = m_folder / "disk";
            if (!MountDisk(disk, "nr_inodes=2"))
                return noDisk;
            std::ofstream((disk / "moves.nc").native()) << "moves";
            if (Zip::ZipFiles(disk / "a.zip", {"moves.nc"}) || boost::filesystem::exists(disk / "a.zip"))
                return 1;
            boost::filesystem::remove(disk / "moves.nc");
            if (!Zip::ZipFiles(disk / "a.zip", {m_moves}))
                return 2;
            const std::string before = support::TemporaryFolder::BytesOf(disk / "a.zip");
            if (Zip::ZipFiles(disk / "a.zip", {m_plate}))
                return 3;
            return support::TemporaryFolder::BytesOf(disk / "a.zip") == before ? 0 : 4;
        });
    const int code = child.ExitCode();
    if (code == noDisk)
        GTEST_SKIP() << noDiskReason;
    EXPECT_EQ(code, 0);
}

TEST_F(PosixZipTest, LimitOfTheFileSizeLeavesTheArchiveAsItWas)
{
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
    const path big = m_folder.File("noise", Noise(200000));
    support::Child child(
        [&]
        {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{100000, 100000};
            if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
                return 1;
            ExpectFailure({big});
            return HasFailure() ? 2 : 0;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixZipTest, WhatTheUserMayNotReadOrWriteIsLeftAsItIs)
{
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {m_moves}));
    const path hidden = m_folder.File("hidden", "of somebody else");
    ::chmod(hidden.c_str(), 0);
    const auto byAnother = [this](const path& file)
    {
        support::Child child(
            [&]
            {
                if (::geteuid() == 0 && ::setuid(3) != 0)
                    return 1;
                ExpectFailure({file});
                return HasFailure() ? 2 : 0;
            });
        return child.ExitCode();
    };
    ::chmod(m_folder.Path().c_str(), 0777);
    EXPECT_EQ(byAnother(hidden), 0);
    ::chmod(m_folder.Path().c_str(), 0555);
    EXPECT_EQ(byAnother(m_plate), 0);
    ::chmod(m_folder.Path().c_str(), 0755);
}

TEST_F(PosixZipTest, FileThatGrowsOrShrinksWhileItIsReadIsRefused)
{
    constexpr std::uint64_t length = 5000000;
    const path file = m_folder.File("changing", Noise(1000000));
    for (const std::uint64_t newLength : {length - 1, length + 1, std::uint64_t(1000000)})
    {
        boost::filesystem::resize_file(file, length);
        EXPECT_FALSE(IsPackedWhile(file, [&] { boost::filesystem::resize_file(file, newLength); })) << newLength;
        EXPECT_EQ(Entries(), 3);
    }
}

TEST_F(PosixZipTest, ArchiveThatAnotherProgramWritesMeanwhileIsLeftAsThatHasWrittenIt)
{
    const path file = m_folder.File("long", Noise(1000000));
    boost::filesystem::resize_file(file, 5000000);
    const path other = m_folder / "other.zip";
    ASSERT_TRUE(Zip::ZipFiles(other, {m_moves, m_plate}));
    const std::string others = support::TemporaryFolder::BytesOf(other);

    EXPECT_FALSE(IsPackedWhile(file, [&] { m_folder.File("a.zip", others); })) << "made";
    EXPECT_TRUE(Bytes() == others);

    EXPECT_FALSE(IsPackedWhile(file, [&] { support::TemporaryFolder::WriteAt(m_archive, others.size(), "more"); }))
        << "longer";
    EXPECT_TRUE(Bytes() == others + "more");

    m_folder.File("a.zip", others);
    EXPECT_FALSE(IsPackedWhile(file, [&] { support::TemporaryFolder::WriteAt(m_archive, 0, "of the same length"); }));
    EXPECT_EQ(Bytes().substr(0, 18), "of the same length");

    m_folder.File("a.zip", others);
    const path first = m_folder / "first.zip";
    ASSERT_TRUE(Zip::ZipFiles(first, {m_moves}));
    EXPECT_FALSE(IsPackedWhile(file, [&] { boost::filesystem::rename(first, m_archive); })) << "replaced";
    EXPECT_EQ(Names(), std::vector<std::string>{"moves.nc"});

    const path alike = m_folder.File("alike.zip", others);
    m_folder.File("a.zip", others);
    for (const path& each : {m_archive, alike})
        SetTimeOfChange(each, 1700000001);
    const auto replace = [&] { boost::filesystem::rename(alike, m_archive); };
    EXPECT_FALSE(IsPackedWhile(file, replace)) << "replaced by one of the same length and time";

    EXPECT_FALSE(IsPackedWhile(file, [&] { boost::filesystem::remove(m_archive); })) << "removed";
    EXPECT_FALSE(boost::filesystem::exists(m_archive));
    EXPECT_EQ(Entries(), 4);
}

TEST_F(PosixZipTest, ThreadsThatWriteOneArchiveLoseNothingThatWasWritten)
{
    constexpr int times = 20;
    std::vector<std::vector<std::string>> written(4);
    {
        std::vector<std::jthread> threads;
        for (std::size_t number = 0; number < written.size(); ++number)
            threads.emplace_back(
                [&, number]
                {
                    for (int time = 0; time < times; ++time)
                    {
                        const std::string name = std::to_string(number) + '-' + std::to_string(time);
                        if (Zip::ZipFiles(m_archive, {m_folder.File(name.c_str(), name)}))
                            written[number].push_back(name);
                    }
                });
    }
    const std::vector<std::string> names = Names();
    std::size_t count = 0;
    for (const std::vector<std::string>& each : written)
    {
        for (const std::string& name : each)
            EXPECT_EQ(std::ranges::count(names, name), 1) << name;
        count += each.size();
    }
    EXPECT_EQ(names.size(), count);
    EXPECT_GE(count, std::size_t(times));
    EXPECT_EQ(Entries(), 3 + 4 * times);
}

TEST_F(PosixZipTest, ThreadsWriteArchivesAtOnce)
{
    std::atomic<int> good = 0;
    {
        std::vector<std::jthread> threads;
        for (int number = 0; number < 4; ++number)
            threads.emplace_back(
                [&, number]
                {
                    for (int time = 0; time < 5; ++time)
                        good += Zip::ZipFiles(m_folder / (std::to_string(number) + ".zip").c_str(), {m_plate, m_moves});
                });
    }
    EXPECT_EQ(good, 20);
    EXPECT_EQ(Entries(), 6);
}
