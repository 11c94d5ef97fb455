#pragma once

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

#include <fstream>
#include <string>

namespace support
{

/// Makes a file a program that the shell runs.
inline void MakeScript(const boost::filesystem::path& file, const std::string& script)
{
    std::ofstream(file.string()) << "#!/bin/sh\n" << script << '\n';
    boost::filesystem::permissions(file, boost::filesystem::owner_all);
}

/// What has a script wait until a file is there, or for more than a minute.
inline std::string AwaitingFile(const boost::filesystem::path& file)
{
    return "tries=0; until [ -e '" + file.string() +
           "' ] || [ $tries -ge 6000 ]; do /bin/sleep 0.01; tries=$((tries + 1)); done; ";
}

}
