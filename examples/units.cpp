// A tool's diameter, length and feed, asked for in the unit and the language of its user, and stored in millimetres.
// What is typed is read, held against its bounds and refused by the library:
//
//     units inch              on Windows in a dialog, on Linux in the terminal
//     units inch --terminal   in the terminal
//
// The unit is mm, inch or metre. The language is the display language, and no argument: the library looks for it when
// it is loaded, ahead of main, and keeps to it. examples/display_language chooses it for all programs of a user; on
// Linux, as long as none is chosen, LC_ALL=de_DE.UTF-8 does so for one run. The exit status is 0 if the tool was
// stored, 1 if not, and 2 for arguments that are none.

#include "examples/units/Tool.h"

#include <iostream>
#include <optional>
#include <string_view>

namespace
{

std::optional<DISTANCE_UNITS> UnitsCalled(std::string_view name)
{
    if (name == "mm")
        return DISTANCE_UNITS_MM;
    if (name == "inch")
        return DISTANCE_UNITS_INCH;
    if (name == "metre")
        return DISTANCE_UNITS_METRE;
    return std::nullopt;
}

}

int main(int argumentCount, char** arguments)
{
    InitialiseUtilityDLL();
    const auto units = UnitsCalled(argumentCount > 1 ? arguments[1] : "");
    const bool inTerminal = argumentCount > 2 && std::string_view(arguments[2]) == "--terminal";
    if (!units || argumentCount > (inTerminal ? 3 : 2))
    {
        std::cerr << "usage: units mm|inch|metre [--terminal]\n";
        return 2;
    }
    SetDistanceUnits(*units);

    Tool tool;
    if (!(inTerminal ? EditInTerminal(tool) : EditInDialog(tool)))
        return 1;
    const auto text = [](double value) { return from_utf(to_wstring(value, 4), CP_UTF8); };
    std::cout << "diameter " << text(tool.diameter) << " mm, length " << text(tool.length) << " mm, feed "
              << text(tool.feed) << " mm/min\n";
    if (std::cout.flush())
        return 0;
    std::cerr << "the output cannot be written\n";
    return 1;
}
