#pragma once

#include <string>
#include <sys/stat.h>

namespace utility::platform::posix
{

/// Gives an open file what the system keeps about another: owner, extended attributes, access list, permissions, each
/// as far as the user may. Where the group cannot go over, its permissions go down to those of everybody else.
/// What is the same already is left alone: a change would have to be brought to the disk.
void CopyAttributes(const std::string& from, const struct stat& status, int to);

}
