#include "examples/units/Tool.h"

#include <iostream>

using utility::framework::TerminalForm;

namespace
{

void Exchange(CDataExchange* exchange, Tool& tool)
{
    DDX_Distance(exchange, diameterField, tool.diameter);
    DDV_MinDistanceEx(exchange, tool.diameter, 0.0);
    DDX_Distance(exchange, lengthField, tool.length);
    DDV_MinDistance(exchange, tool.length, tool.diameter);
    DDV_MaxDistance(exchange, tool.length, 500.0);
    DDX_Distance(exchange, feedField, tool.feed);
    DDV_MinMaxDistance(exchange, tool.feed, 1.0F, 20'000.0F);
}

}

std::vector<TerminalForm::Field> ToolFields()
{
    const std::wstring unit = GetDistanceDescription(true);
    return {{diameterField, L"Diameter, " + unit},
            {lengthField, L"Length, " + unit},
            {feedField, L"Feed, " + unit + L"/min"}};
}

void Show(utility::platform::Form& form, Tool tool)
{
    CDataExchange exchange(form, false);
    Exchange(&exchange, tool);
}

bool Save(utility::platform::Form& form, Tool& tool)
try
{
    Tool edited;
    CDataExchange exchange(form, true);
    Exchange(&exchange, edited);
    tool = edited;
    return true;
}
catch (CUserException* refusal)
{
    refusal->Delete();
    return false;
}

bool EditInTerminal(Tool& tool)
{
    TerminalForm form(std::cin, std::cout, ToolFields());
    Show(form, tool);
    while (form.Edit())
    {
        if (Save(form, tool))
            return true;
    }
    return false;
}
