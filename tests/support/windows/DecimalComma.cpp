#include "tests/support/DecimalComma.h"

#include <gtest/gtest.h>

#include <clocale>

namespace support
{

DecimalComma::DecimalComma() : m_earlier(std::setlocale(LC_ALL, nullptr))
{
    EXPECT_NE(std::setlocale(LC_ALL, "German"), nullptr);
}

DecimalComma::~DecimalComma() { std::setlocale(LC_ALL, m_earlier.c_str()); }

}
