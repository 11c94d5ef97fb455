#pragma once

#include "utility/platform/ZipLibrary.h"

#include <string>
#include <vector>

namespace support
{

/// A library of zip archives that keeps what it is given, and gives the results that it is told to.
class RecordingZipLibrary final : public utility::platform::ZipLibraryService
{
public:
    int ZpInit(utility::platform::ZipCallbacks& given) override
    {
        ++inits;
        callbacks = given;
        return initResult;
    }
    int ZpArchive(const utility::platform::ZipCommand& given, utility::platform::ZipOptions& givenOptions) override
    {
        ++archives;
        command = given;
        options = givenOptions;
        archive = given.archive;
        folder = givenOptions.rootFolder;
        entries.assign(given.entries, given.entries + given.count);
        return archiveResult;
    }

    int initResult = 1;
    int archiveResult = 0;
    int inits = 0;
    int archives = 0;
    utility::platform::ZipCallbacks callbacks = {};
    utility::platform::ZipCommand command = {};
    utility::platform::ZipOptions options = {};
    std::string archive;
    std::string folder;
    std::vector<std::string> entries;
};

}
