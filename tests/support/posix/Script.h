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

}
