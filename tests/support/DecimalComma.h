#pragma once

#include <string>

namespace support
{

/// The runtime has a locale with a decimal comma for a scope.
class DecimalComma
{
public:
    DecimalComma();
    DecimalComma(const DecimalComma&) = delete;
    DecimalComma& operator=(const DecimalComma&) = delete;
    ~DecimalComma();

private:
    const std::string m_earlier;
};

}
