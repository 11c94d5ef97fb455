#pragma once

// Numbers are formatted and parsed with the point, whatever the locale of the user is, by code that does so through the
// C library.
//
//     {
//         const CSetCLocale cLocale;
//         std::snprintf(text, sizeof(text), "X%.3f", 10.5);
//     }
//     assert(text == std::string("X10.500"));
//
// Only the calling thread is affected, and the object is destroyed by the thread that made it. On Windows that takes a
// C library with locales of threads, which msvcrt.dll is not: with that one the whole process goes by "C", as long as
// there is an object in any of its threads.
//
// On Linux a locale that the thread had of its own, by uselocale, is in use again in the end, and has to be there
// still.

#include "utility/platform/Export.h"
#include "utility/platform/RuntimeLocale.h"

class UTILITY_API CSetCLocale
{
public:
    /// Throws nothing but std::bad_alloc; nothing is changed then.
    CSetCLocale();
    /// A copy puts the same back when it dies, whichever dies first.
    CSetCLocale(const CSetCLocale& other);
    CSetCLocale& operator=(const CSetCLocale& other);
    /// Puts back what the constructor found.
    ~CSetCLocale();

private:
    utility::platform::RuntimeLocale m_earlier;
};
