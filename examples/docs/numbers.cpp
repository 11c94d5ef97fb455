#include "utility/Utility.h"

#include <clocale>
#include <cstdio>
#include <iostream>
#include <span>

void Show(const std::wstring& text) { std::cout << from_utf(text, 65001) << '\n'; }

int main()
{
    // Out: a number of places, and then what else is asked for.
    Show(to_wstring(-1.5, 3));
    Show(to_wstring(2.5, 3, true, L",", true));      // a plus, a comma, no last zeros
    Show(to_wstring(1250.0, -2, false, L".", true)); // hundreds: the tie goes to even
    Show(to_wstring(-0.004, 2) + L" or " + QLMFormatFloatPrecise(-0.004, 2));
    Show(QLMFormatFloatE(1500.0, 2));

    // Out, without an allocation: the length is told, and what does not fit is not written.
    char block[32] = "G01 X";
    std::size_t end = 5;
    end += FormatFixed(std::span(block).subspan(end), 10.5, 3);
    block[end++] = 'Y';
    end += FormatFixed(std::span(block).subspan(end), -0.25, 3, false, ".", true);
    std::cout << std::string_view(block, end) << '\n';
    if (FormatFixed(std::span(block).first(3), 10.5, 3) > 3)
        std::cout << "10.500 is longer than that\n";

    // In: D is an exponent too, and what follows the number is told.
    double value = 0.0;
    const std::wstring rest = QLMParseFloat1(L"1,5D1 mm", L",", value);
    Show(to_wstring(value, 1) + L", and then" + rest);
    if (!QLMParseFloat(L"15 mm", value))
        Show(L"15 mm is more than a number");

    // A value that a file keeps in four bytes is made that of four bytes at once.
    Show(to_wstring(MakeFloatDoubleConsistent(0.1), 12));

    // Code of others goes by the process's locale; in this scope it goes by the point.
    std::setlocale(LC_ALL, "");
    {
        const CSetCLocale pointInThisScope;
        std::printf("X%.3f\n", 10.5);
        std::fflush(stdout);
    }

    StatSeries widths;
    for (const double width : {12.5, 11.75, 12.25})
        widths.AddValNotArray(width);
    Show(to_wstring(widths.minimum, 2) + L" to " + to_wstring(widths.maximum, 2));
    Show(to_wstring(widths.sum / widths.count, 3) + L" on average");
}
