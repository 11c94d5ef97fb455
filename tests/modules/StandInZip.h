#pragma once

#include <string>
#include <vector>
#include <windows.h>

/// What the library that stands in for zip32z64.dll was given, and what it is to give; of its function StandInZip.
struct StandInZipRecords
{
    unsigned char callbacks[48];
    unsigned char command[32];
    unsigned char options[200];
    int output;
    int answers[2];
    std::string archive;
    std::string folder;
    std::vector<std::string> entries;
    int initResult = 1;
    int archiveResult = 0;
};
