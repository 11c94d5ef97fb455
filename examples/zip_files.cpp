// Packs files into a zip archive, or updates one that is there.

#include "examples/Console.h"
#include "utility/Utility.h"

#include <boost/filesystem/operations.hpp>

#include <cstdio>
#include <exception>
#include <set>
#include <vector>

int main(int argumentCount, char** arguments)
try
{
    InitialiseUtilityDLL();
    const std::vector<boost::filesystem::path> paths = console::Arguments(argumentCount, arguments);
    if (paths.size() < 2)
    {
        console::Print(stderr, "usage: zip_files ARCHIVE FILE...\n");
        return 2;
    }
    // Relative names would be those of files in the folder of the archive.
    std::set<boost::filesystem::path> files;
    for (std::size_t each = 1; each < paths.size(); ++each)
    {
        boost::system::error_code failure;
        if (!boost::filesystem::exists(paths[each], failure))
        {
            console::Print(stderr, console::Utf8(paths[each]) + " cannot be found\n");
            return 1;
        }
        files.insert(boost::filesystem::absolute(paths[each]));
    }
    if (Zip::ZipFiles(boost::filesystem::absolute(paths.front()), files))
        return 0;
    console::Print(stderr, console::Utf8(paths.front()) + " cannot be written\n");
    return 1;
}
catch (const std::exception& failure)
{
    console::Print(stderr, std::string(failure.what()) + '\n');
    return 1;
}
