// A file saved anew so that a crash leaves the old version or the new one, by CBackupFile and by the calls of the
// system that a careful programmer would write down: open, write, fsync, rename, fsync of the folder. It is the disk
// that takes the time, so it is measured by the clock; the two take turns, because a disk's pace changes from one
// second to the next.
//
//     SaveBench FOLDER [TURNS]
//
// prints a line for each size: the bytes, the median microseconds of the library's save and of the other, and the
// ratio, above 1 if the library is ahead.

#include "utility/files/BackupFile.h"
#include "utility/files/MemoryMappedFile.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

using boost::filesystem::path;

void SaveByUtility(const path& file, const std::string& bytes)
{
    CBackupFile backup(file);
    CMemoryMappedFile writer(backup.GetTempFilename(), 0);
    writer.WriteFile(bytes.data(), bytes.size());
    writer.CommitAndClose();
    backup.SetReplaceFile(true);
}

void Check(bool isDone)
{
    if (isDone)
        return;
    std::perror("SaveBench");
    std::exit(1);
}

void SaveByHand(const path& file, const std::string& bytes)
{
    const path draft = file.native() + ".new";
    const int written = ::open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    Check(written >= 0);
    Check(::write(written, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    Check(::fsync(written) == 0);
    Check(::close(written) == 0);
    Check(::rename(draft.c_str(), file.c_str()) == 0);
    const int folder = ::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    Check(folder >= 0);
    Check(::fsync(folder) == 0);
    ::close(folder);
}

double Microseconds(void (*save)(const path&, const std::string&), const path& file, const std::string& bytes)
{
    const auto begin = std::chrono::steady_clock::now();
    save(file, bytes);
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
}

double Median(std::vector<double>& values)
{
    std::ranges::sort(values);
    return (values[values.size() / 2] + values[(values.size() - 1) / 2]) / 2;
}

}

int main(int argumentCount, char** arguments)
{
    const path folder = path(argumentCount > 1 ? arguments[1] : ".") / boost::filesystem::unique_path("save-%%%%%%%%");
    const int turns = argumentCount > 2 ? std::atoi(arguments[2]) : 50;
    create_directory(folder);
    for (const std::size_t size : {10'000U, 1'000'000U, 20'000'000U})
    {
        const std::string bytes(size, 'x');
        std::vector<double> byUtility;
        std::vector<double> byHand;
        for (int turn = -5; turn < turns; ++turn)
        {
            const double utility = Microseconds(&SaveByUtility, folder / "utility", bytes);
            const double hand = Microseconds(&SaveByHand, folder / "hand", bytes);
            if (turn < 0) // the first ones make the files
                continue;
            byUtility.push_back(utility);
            byHand.push_back(hand);
        }
        const double utility = Median(byUtility);
        const double hand = Median(byHand);
        std::printf("%zu\t%.0f\t%.0f\t%.2f\n", size, utility, hand, hand / utility);
    }
    remove_all(folder);
}
