#include "bench/RealFields.h"

#include <cmath>
#include <cstdio>

std::string NextReal(std::mt19937& random)
{
    const auto below = [&random](unsigned limit) { return static_cast<int>(random() % limit); };
    const double mantissa = (below(2) == 0 ? 1 : -1) * static_cast<double>(random()) / 4294967296.0;
    char text[40];
    const int kind = below(20);
    if (kind < 4)
        std::snprintf(text, sizeof text, "%.0f", mantissa * std::pow(10.0, 5 + below(3)));
    else if (kind < 15)
        std::snprintf(text, sizeof text, "%#.*f", below(8), mantissa * std::pow(10.0, below(5)));
    else
        std::snprintf(text, sizeof text, "%.*E", 4 + below(5), mantissa * std::pow(10.0, below(9) - 4));
    return text;
}
