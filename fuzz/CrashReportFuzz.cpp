// The reader of crash reports over arbitrary bytes, and the page that is made of what it read: no text of a report gets
// out of its element, and none has a character that a terminal takes for a command.

#include "examples/crash/Page.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace
{

bool IsHarmless(const std::string& text)
{
    return std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; });
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    crash::Report report = crash::Read({reinterpret_cast<const char*>(data), size});
    bool isHarmless = IsHarmless(report.description) && IsHarmless(report.path) && IsHarmless(report.program);
    std::size_t variables = 0;
    for (crash::Frame& frame : report.stack)
    {
        isHarmless = isHarmless && IsHarmless(frame.function) && IsHarmless(frame.path);
        for (const auto* const list : {&frame.parameters, &frame.locals})
        {
            variables += list->size();
            for (const crash::Variable& variable : *list)
                isHarmless = isHarmless && IsHarmless(variable.name) && IsHarmless(variable.value);
        }
        frame.line.clear(); // no file is opened
    }
    const std::string page = crash::PageText(report, {report.description}, report.path);
    const auto ends = static_cast<std::size_t>(std::ranges::count(page, '<'));
    // How many elements there are is a matter of how many things there are, and not of what their texts say.
    for (crash::Frame& frame : report.stack)
        frame.function = frame.address = frame.frameAddress = frame.displacement = "";
    report.description = report.code = report.address = report.program = report.path = "";
    const std::string plain = crash::PageText(report, {""}, "");
    if (!isHarmless || ends != static_cast<std::size_t>(std::ranges::count(plain, '<')) || variables > size)
        std::abort();
    return 0;
}
