#include "examples/units/Tool.h"

bool EditInDialog(Tool& tool) { return EditInTerminal(tool); }
