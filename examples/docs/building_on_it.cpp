#include "utility/Utility.h"

#include <iostream>

int main()
{
    // What utility_version_record() gave this program. Behind InitialiseUtilityDLL() null would be the library.
    CVersion version;
    if (!version.Initialise(nullptr))
        return 1;
    std::cout << from_utf(version.GetProductName(), 65001) << ' ' << (version.GetFileVersionMS() >> 16) << '.'
              << (version.GetFileVersionMS() & 0xFFFF) << ", by " << from_utf(version.GetCompanyName(), 65001) << '\n';

    InitialiseUtilityDLL(); // before message texts are expected
    std::cout << from_utf(LoadMessage(8302, L'x'), 65001) << '\n';
}
