// An archive is made in four steps, each of which leaves what is there alone:
//
//   1. the files are looked at, for what can be known to fail before a byte is written
//   2. what stays of an old archive is copied into a new file beside it, a whole archive already
//   3. minizip adds the files to that
//   4. the new archive is brought to the disk and takes the place of the old one

#include "utility/platform/posix/ziplibrary/Pack.h"

#include "utility/platform/Clock.h"
#include "utility/platform/Error.h"
#include "utility/platform/formats/Utf8.h"
#include "utility/platform/posix/ziplibrary/KeptEntries.h"
#include "utility/platform/posix/ziplibrary/NewArchive.h"
#include "utility/platform/posix/ziplibrary/SourceFile.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace utility::platform::posix
{

namespace
{

using boost::filesystem::path;

using FilesByName = std::map<std::string, path, std::less<>>;

bool AreSame(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// The files to be packed by the names they will have. None if one cannot be, or if two have one name.
std::optional<FilesByName> FilesToPack(const path& folder, std::span<const char* const> files,
                                       const SourceFile& oldArchive)
{
    FilesByName byName;
    for (const path name : files)
    {
        const path file = name.is_absolute() ? name : folder / name;
        struct stat status;
        if (::stat(file.c_str(), &status) != 0)
            return std::nullopt;
        if (S_ISDIR(status.st_mode) || (oldArchive.IsOpen() && AreSame(status, oldArchive.Status())))
            continue;
        if (!S_ISREG(status.st_mode) || !byName.emplace(file.filename().native(), file).second)
            return std::nullopt;
    }
    return byName.empty() ? std::nullopt : std::optional(std::move(byName));
}

/// Where an archive is that is there, behind links; none if that cannot be told.
std::optional<path> BehindLinks(const path& archive)
{
    boost::system::error_code failure;
    const path place =
        boost::filesystem::is_symlink(archive, failure) ? boost::filesystem::canonical(archive, failure) : archive;
    return failure ? std::nullopt : std::optional(place);
}

bool IsUtf8(const std::string& text)
{
    return formats::Utf8FromWide(formats::WideFromUtf8(text, formats::Malformed::replaced)) == text;
}

/// A moment as archives have it: local time, in years from 1980 to 2107.
tm_zip ZipTimeOf(std::int64_t seconds)
{
    constexpr int firstYear = 1980;
    constexpr int lastYear = 2107;
    const std::tm local = LocalTime(seconds);
    const int year = local.tm_year + 1900;
    const auto number = [](int value) { return static_cast<uInt>(value); };
    if (year < firstYear)
        return {0, 0, 0, 1, 0, number(firstYear)};
    if (year > lastYear)
        return {59, 59, 23, 31, 11, number(lastYear)};
    return {number(std::min(local.tm_sec, 59)),
            number(local.tm_min),
            number(local.tm_hour),
            number(local.tm_mday),
            number(local.tm_mon),
            number(year)};
}

/// The part of an entry that has its time in seconds since the start of 1970 UTC, where 32 bits hold that.
std::string ExactTimeOf(std::int64_t seconds)
{
    const auto stored = static_cast<std::int32_t>(seconds);
    if (stored != seconds)
        return {};
    constexpr char timeOfChange = 1;
    std::string extra = {'U', 'T', 5, 0, timeOfChange};
    return extra.append(reinterpret_cast<const char*>(&stored), sizeof(stored));
}

bool AddFile(const Minizip& minizip, zipFile zip, const NewArchive& archive, const std::string& name, const path& path,
             int level, std::vector<char>& block)
{
    const SourceFile file(path);
    if (!file.IsPlain())
        return false;
    const std::int64_t changed = file.Status().st_mtim.tv_sec;
    zip_fileinfo information = {};
    information.tmz_date = ZipTimeOf(changed);
    constexpr int permissionsAt = 16;
    information.external_fa = static_cast<uLong>(file.Status().st_mode) << permissionsAt;
    const std::string exactTime = ExactTimeOf(changed);
    const auto extraSize = static_cast<uInt>(exactTime.size());
    constexpr uLong madeOnThisSystem = 3 << 8 | 45;
    constexpr uLong nameIsUtf8 = 1 << 11;
    // What cannot be packed gets longer by less than a thousandth.
    constexpr std::uint64_t longest = std::numeric_limits<std::uint32_t>::max() / 1000 * 999;
    if (minizip.zipOpenNewFileInZip4_64(zip, name.c_str(), &information, exactTime.data(), extraSize, exactTime.data(),
                                        extraSize, nullptr, Z_DEFLATED, level, 0, -MAX_WBITS, DEF_MEM_LEVEL,
                                        Z_DEFAULT_STRATEGY, nullptr, 0, madeOnThisSystem, IsUtf8(name) ? nameIsUtf8 : 0,
                                        file.Length() > longest ? 1 : 0) != ZIP_OK)
        return false;
    for (std::uint64_t at = 0; at < file.Length();)
    {
        const std::size_t size = std::min<std::uint64_t>(block.size(), file.Length() - at);
        if (archive.HasFailed() || !file.Read(block.data(), size, at) ||
            minizip.zipWriteInFileInZip(zip, block.data(), static_cast<unsigned int>(size)) != ZIP_OK)
            return false;
        at += size;
    }
    return file.EndsAt(file.Length()) && minizip.zipCloseFileInZip(zip) == ZIP_OK;
}

bool AddFiles(const Minizip& minizip, const FilesByName& files, int level, NewArchive& archive)
{
    zlib_filefunc64_def functions = archive.Functions();
    const int append = archive.Length() > 0 ? APPEND_STATUS_ADDINZIP : APPEND_STATUS_CREATE;
    const auto close = [&](zipFile zip) { return minizip.zipClose(zip, nullptr); };
    std::unique_ptr<void, decltype(close)> zip(minizip.zipOpen2_64("", append, nullptr, &functions), close);
    std::vector<char> block(1 << 17);
    return zip != nullptr &&
           std::ranges::all_of(files,
                               [&](const auto& file) {
                                   return AddFile(minizip, zip.get(), archive, file.first, file.second, level, block);
                               }) &&
           close(zip.release()) == ZIP_OK;
}

}

bool Pack(const Minizip& minizip, const path& archive, const path& folder, std::span<const char* const> files,
          int level)
{
    const SourceFile old(archive);
    if (!old.IsOpen() && LastError() != ERROR_FILE_NOT_FOUND)
        return false;
    const auto byName = FilesToPack(folder, files, old);
    if (!byName)
        return false;
    // What is beside a link may be on another disk.
    const auto place = old.IsOpen() ? BehindLinks(archive) : archive;
    if (!place)
        return false;
    NewArchive made(*place);
    KeptEntries kept = {};
    if (old.IsOpen())
    {
        const auto isToGo = [&](std::string_view name) { return byName->contains(name); };
        auto found = KeepEntries(old, isToGo, made);
        if (!found)
            return false;
        kept = std::move(*found);
    }
    return AddFiles(minizip, *byName, level, made) &&
           Finish(made, kept.count + byName->size(), byName->size(), kept.comment) && made.TakePlace(old);
}

}
