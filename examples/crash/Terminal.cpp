#include "examples/crash/Terminal.h"

#include "examples/crash/Source.h"

#include <algorithm>
#include <cstddef>

namespace crash
{

namespace
{

std::string Padded(std::string text, std::size_t width)
{
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string Line(const Variable& variable)
{
    const std::string type = TypeOf(variable);
    const std::string place = RegisterOf(variable);
    std::string line = "        " + variable.name;
    if (!type.empty())
        line += ": " + type;
    if (!variable.value.empty())
        line += " = " + ValueOf(variable);
    if (!place.empty())
        line += " (" + place + ')';
    return line + '\n';
}

std::string Text(const Frame& frame, const Module* module, const std::vector<SourceLine>& source, std::size_t number)
{
    std::string text = Padded("  #" + std::to_string(number), 6) + frame.function + " +" + frame.displacement + '\n';
    std::string place;
    if (!frame.path.empty())
        place = frame.path + ':' + frame.line;
    if (module != nullptr)
        place += (place.empty() ? "" : "  ") + ('[' + std::string(NameOf(module->path)) + ']');
    if (!place.empty())
        text += "      " + place + '\n';
    for (const SourceLine& line : source)
        text += "      | " + line.text.substr(std::min(line.text.find_first_not_of(' '), line.text.size())) + '\n';
    for (const Variable& variable : frame.parameters)
        text += Line(variable);
    for (const Variable& variable : frame.locals)
        text += Line(variable);
    return text;
}

}

std::string TerminalText(const Report& report, const std::vector<std::string>& log)
{
    std::string text = std::string(NameOf(report.program)) + ": " + report.description + " (" + report.code + ") at " +
                       report.address + '\n';
    if (!report.path.empty())
        text += "  program  " + report.path + '\n';
    if (!report.system.empty())
        text += "  system   " + report.system + '\n';
    text += "\nstack\n";
    Sources sources(0);
    const ModuleMap modules(report);
    for (std::size_t i = 0; i != report.stack.size(); ++i)
    {
        const Frame& frame = report.stack[i];
        text += Text(frame, modules.At(frame.address), sources.LinesAround(frame), i);
    }
    if (!report.isWhole)
        text += "  The report ends here: it is not whole.\n";
    text += "\nmodules\n";
    for (const Module& module : report.modules)
        text += "  " + module.base + "  " + Padded(module.time, 15) + "  " + module.path +
                (module.version.empty() ? "" : ", version " + module.version) + '\n';
    if (!log.empty())
        text += "\nlog\n";
    for (const std::string& line : log)
        text += "  " + line + '\n';
    return text;
}

}
