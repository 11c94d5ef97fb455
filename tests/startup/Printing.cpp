// What a host on Linux finds where the display language has a decimal comma and the system has its locale, for the
// tests of startup/CMakeLists.txt:
//   Printing PATH    makes that locale in a folder and starts anew with it
// Its exit code is the number of things that are not as they should be.

#include "utility/Utility.h"

#include <algorithm>
#include <boost/filesystem/operations.hpp>
#include <charconv>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace
{

int failures = 0;

template <class Text>
void Expect(const Text& found, const Text& expected, const char* what)
{
    if (found == expected)
        return;
    std::fprintf(stderr, "%s\n", what);
    ++failures;
}

std::string Printed(double value)
{
    char text[32];
    std::snprintf(text, sizeof(text), "X%.3f", value);
    return text;
}

/// That of C with another decimal symbol: a machine may have none but C.
void MakeLocale(const boost::filesystem::path& folder)
{
    const boost::filesystem::path locale = folder / "de_DE.UTF-8";
    boost::filesystem::remove_all(locale);
    boost::filesystem::create_directories(folder);
    boost::filesystem::copy("/usr/lib/locale/C.utf8", locale, boost::filesystem::copy_options::recursive);
    std::ifstream original("/usr/lib/locale/C.utf8/LC_NUMERIC", std::ios::binary);
    std::string numbers(std::istreambuf_iterator<char>(original), {});
    std::replace(numbers.begin(), numbers.end(), '.', ',');
    std::ofstream((locale / "LC_NUMERIC").native(), std::ios::binary) << numbers;
}

int StartAnew(const char* program, const char* folder)
{
    MakeLocale(folder);
    ::setenv("LOCPATH", folder, 1);
    ::setenv("XDG_CONFIG_HOME", folder, 1); // in which nobody has chosen a language
    ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    ::execl(program, program, static_cast<char*>(nullptr));
    return 2;
}

void ExpectTheLocaleOfTheLanguage(const char* when)
{
    Expect<std::string>(std::setlocale(LC_ALL, nullptr), "de_DE.UTF-8", when);
    Expect<std::string>(Printed(10.5), "X10,500", when);
    Expect(std::strtod("10.5", nullptr), 10.0, when);
}

void ExpectPointsWhateverTheLocale()
{
    CStringW text;
    text.Format(L"X%.3f", 10.5);
    Expect<std::wstring>(text.GetString(), L"X10.500", "CStringW::Format");
    Expect<std::wstring>(to_wstring(10.5, 3), L"10.500", "to_wstring");
    Expect<std::wstring>(QLMFormatFloatPrecise(10.5, 3), L"10.500", "QLMFormatFloatPrecise");
    char digits[32];
    *std::to_chars(digits, std::end(digits), 10.5).ptr = '\0';
    Expect<std::string>(digits, "10.5", "std::to_chars");
    double value = 0;
    Expect(QLMParseFloat(L"10.5", value), true, "QLMParseFloat");
    Expect(value, 10.5, "QLMParseFloat");
    value = 0;
    std::from_chars(digits, digits + 4, value);
    Expect(value, 10.5, "std::from_chars");
}

}

int main(int argumentCount, char** arguments)
{
    if (argumentCount > 1)
        return StartAnew(arguments[0], arguments[1]);
    ExpectTheLocaleOfTheLanguage("when the library is loaded");
    ExpectPointsWhateverTheLocale();
    std::setlocale(LC_NUMERIC, "C");
    Expect<std::string>(Printed(10.5), "X10.500", "the host's own choice");
    ExpectPointsWhateverTheLocale();
    const CResourceCounter resources(nullptr);
    ExpectTheLocaleOfTheLanguage("behind a CResourceCounter");
    std::setlocale(LC_NUMERIC, "C");
    Expect<std::string>(Printed(10.5), "X10.500", "the host's own choice again");
    return failures;
}
