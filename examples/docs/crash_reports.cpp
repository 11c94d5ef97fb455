#include "utility/Utility.h"

#include <iostream>
#include <string>

struct Tool
{
    int teeth = 0;
};

int FeedPerTooth(const Tool* tool, int feed) { return feed / tool->teeth; }

void Mill(const Tool* tool)
try
{
    std::cout << FeedPerTooth(tool, 1200) << '\n';
}
catch (CStructuredException* failure)
{
    wchar_t text[256];
    failure->GetErrorMessage(text, 256, nullptr);
    failure->Delete(); // failures of the framework are thrown as pointers
    const std::string message = from_utf(text, 65001);
    // The second line has addresses.
    std::cout << message.substr(0, message.find('\n')) << '\n';
}

int main()
{
    // What this program expects needs no report.
    CUnhandledExceptionFilter::g_bGenerateExceptionReport = false;

    const CSETranslator translator; // faults on this thread are thrown
    const Tool drill;
    const Tool mill{4};
    for (const Tool* tool : {static_cast<const Tool*>(nullptr), &drill, &mill})
        Mill(tool);
}
