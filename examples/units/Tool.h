#pragma once

#include "utility/Utility.h"

/// What is asked for, in millimetres and minutes.
struct Tool
{
    double diameter = 10.0;
    double length = 50.0;
    float feed = 1200.0F;
};

/// The numbers of the fields.
enum ToolField
{
    diameterField = 1001,
    lengthField,
    feedField,
};

/// The labels of the fields, with the unit.
std::vector<utility::framework::TerminalForm::Field> ToolFields();

void Show(utility::platform::Form& form, Tool tool);

/// Takes all of the tool from the form, or, where a value is refused and the user has been told, nothing.
bool Save(utility::platform::Form& form, Tool& tool);

/// Has the user edit the tool. False if they gave up.
bool EditInTerminal(Tool& tool);
/// The same in a window; on Linux in the terminal.
bool EditInDialog(Tool& tool);
