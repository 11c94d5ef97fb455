#include "tests/support/Crasher.h"

#include <boost/algorithm/string/replace.hpp>
#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace support
{

void Crasher::UseCopy(const boost::filesystem::path& name)
{
    const boost::filesystem::path folder = m_folder / "program";
    boost::filesystem::create_directory(folder);
    TemporaryFolder::Copy(m_program, folder / name);
    m_program = folder / name;
}

boost::filesystem::path Crasher::ReportFolder() const
{
    return DataFolder() / "Selvane Production Software/Exception Reports" / m_program.stem() / "0.0";
}

std::vector<boost::filesystem::path> Crasher::Reports() const
{
    std::vector<boost::filesystem::path> reports;
    boost::system::error_code missing;
    for (const auto& each : boost::filesystem::directory_iterator(ReportFolder(), missing))
        reports.push_back(each.path());
    std::sort(reports.begin(), reports.end());
    return reports;
}

std::string Crasher::Report() const
{
    const std::vector<boost::filesystem::path> reports = Reports();
    return reports.size() == 1 ? TextOf(reports[0]) : std::string();
}

std::string Crasher::TextOf(const boost::filesystem::path& report)
{
    // The program, and so the report's folder, may have any name.
    std::ifstream file(std::filesystem::path(report.native()), std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (boost::filesystem::path::preferred_separator == '\\')
        boost::replace_all(text, "\r\n", "\n");
    return text;
}

}
