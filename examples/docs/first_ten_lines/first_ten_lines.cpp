#include "utility/Utility.h"

#include <iostream>

int main()
{
    double feed = 0.0; // in mm a minute, as a FORTRAN program wrote it
    QLMParseFloat(L" 1.5D3 ", feed);
    std::cout << from_utf(to_wstring(feed / 60.0, 3), 65001) << " mm/s\n";
}
