#include "tests/support/DecimalComma.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>

namespace support
{

// A machine may have no locale but C: one is made of that.
DecimalComma::DecimalComma() : m_earlier(std::setlocale(LC_ALL, nullptr))
{
    const TemporaryFolder folder;
    boost::filesystem::create_directory(folder / "comma");
    std::string numbers = TemporaryFolder::BytesOf("/usr/lib/locale/C.utf8/LC_NUMERIC");
    std::replace(numbers.begin(), numbers.end(), '.', ',');
    folder.File("comma/LC_NUMERIC", numbers);
    ::setenv("LOCPATH", folder.Path().c_str(), 1);
    EXPECT_NE(std::setlocale(LC_NUMERIC, "comma"), nullptr);
    ::unsetenv("LOCPATH");
}

DecimalComma::~DecimalComma() { std::setlocale(LC_ALL, m_earlier.c_str()); }

}
