#include "examples/settings/HiveOptions.h"

namespace hiveoptions
{

const char* const help = "";

bool Apply(const std::string& /*option*/, const boost::filesystem::path& /*file*/) { return false; }

}
