#include "examples/crash/Page.h"

#include "examples/crash/Source.h"

#include <cstddef>

namespace crash
{

namespace
{

constexpr char style[] = R"(
:root { color-scheme: light dark;
  --page: #f6f7f9; --card: #fff; --ink: #1c2430; --soft: #5d6878; --line: #dfe3e9; --hit: #fde8e4; --mark: #b3261e;
  --type: #6b3fa0; --value: #0b5d3b; --accent: #1f5fbf; }
@media (prefers-color-scheme: dark) { :root {
  --page: #14181e; --card: #1c222a; --ink: #e4e8ee; --soft: #97a3b3; --line: #303843; --hit: #4a2320; --mark: #ff8a7a;
  --type: #c5a3f5; --value: #7fd6a8; --accent: #82b1ff; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 72rem; padding: 1.5rem clamp(0.75rem, 3vw, 2rem) 4rem; background: var(--page);
  color: var(--ink); font: 15px/1.5 system-ui, sans-serif; }
code, pre, td, .function { font-family: ui-monospace, "DejaVu Sans Mono", Consolas, monospace; font-size: 13px; }
h1 { margin: 0; font-size: 1.6rem; line-height: 1.25; color: var(--mark); overflow-wrap: anywhere; }
h2 { margin: 2rem 0 0.5rem; font-size: 1.05rem; }
h3 { margin: 0.75rem 0 0.25rem; font-size: 0.8rem; font-weight: 600; color: var(--soft); }
p { margin: 0.25rem 0; }
header p, .where, .count { color: var(--soft); overflow-wrap: anywhere; }
.cut { margin: 1rem 0; padding: 0.5rem 0.75rem; border-left: 3px solid var(--mark); background: var(--hit); }
.tools { position: sticky; top: 0; z-index: 1; display: flex; gap: 0.75rem; align-items: center; padding: 0.75rem 0;
  background: var(--page); }
.tools input { flex: 1; min-width: 0; max-width: 24rem; padding: 0.4rem 0.7rem; border: 1px solid var(--line);
  border-radius: 6px; background: var(--card); color: inherit; font: inherit; }
.tools input:focus { outline: 2px solid var(--accent); outline-offset: -1px; }
details { margin: 0 0 0.5rem; border: 1px solid var(--line); border-radius: 8px; background: var(--card); }
summary { padding: 0.5rem 0.75rem; cursor: pointer; overflow-wrap: anywhere; }
summary .number { display: inline-block; min-width: 2.2rem; color: var(--soft); }
summary .where { display: block; margin-left: 3.2rem; font-size: 13px; }
.inside { padding: 0 0.75rem 0.75rem; overflow-x: auto; }
pre { margin: 0; padding: 0.5rem 0; overflow-x: auto; border: 1px solid var(--line); border-radius: 6px; }
pre span { display: block; padding: 0 0.75rem; min-width: max-content; }
pre .here { background: var(--hit); }
pre i { display: inline-block; min-width: 3rem; margin-right: 1rem; color: var(--soft); font-style: normal;
  text-align: right; user-select: none; }
table { width: 100%; border-collapse: collapse; table-layout: fixed; }
td { padding: 0.2rem 1rem 0.2rem 0; border-top: 1px solid var(--line); vertical-align: top; overflow-wrap: anywhere; }
tr:first-child td { border-top: 0; }
.inside > p { margin-bottom: 0.5rem; font-size: 13px; }
.frame td:nth-child(1) { width: 28%; }
.frame td:nth-child(2) { width: 36%; }
.frame td:nth-child(4) { width: 12%; }
.plain td:nth-child(1) { width: 46%; }
.plain td { white-space: normal; }
.type { color: var(--type); }
.value { color: var(--value); }
.soft { color: var(--soft); white-space: nowrap; }
[hidden] { display: none; }
)";

// Its digest is told in the page, which is what lets a browser run it.
constexpr char script[] = R"(
const box = document.getElementById('filter'), told = document.getElementById('told');
const finds = (element, wanted) => element.textContent.toLowerCase().includes(wanted);
function filter() {
  const wanted = box.value.trim().toLowerCase();
  let count = 0;
  for (const frame of document.querySelectorAll('.frame')) {
    const own = finds(frame.querySelector('.function'), wanted);
    let inside = false;
    for (const row of frame.querySelectorAll('tr')) {
      const found = finds(row.cells[0], wanted);
      row.hidden = !own && !found;
      inside ||= found;
    }
    frame.hidden = !own && !inside;
    if (wanted && inside) frame.open = true;
    count += !frame.hidden;
  }
  for (const row of document.querySelectorAll('.plain tr, .plain span')) {
    row.hidden = !finds(row, wanted);
    count += !row.hidden;
    const list = row.closest('details');
    if (list && wanted && !row.hidden) list.open = true;
  }
  told.textContent = wanted ? count + (count === 1 ? ' match' : ' matches') : '';
}
function fromAddress() {
  const [, text] = location.hash.match(/^#filter=(.*)$/) ?? [];
  if (text === undefined) return;
  try { box.value = decodeURIComponent(text); } catch { box.value = text; }
  filter();
}
box.addEventListener('input', filter);
addEventListener('hashchange', fromAddress);
fromAddress();
)";
constexpr char scriptDigest[] = "sha256-Tp+AHfxJjZUw/xKs2NxqnRvc1I5u4UbmmYS0CayTMN0=";

/// As the text of an element or the value of an attribute.
std::string Quoted(std::string_view text)
{
    std::string quoted;
    for (const char c : text)
    {
        switch (c)
        {
        case '&':
            quoted += "&amp;";
            break;
        case '<':
            quoted += "&lt;";
            break;
        case '>':
            quoted += "&gt;";
            break;
        case '"':
            quoted += "&quot;";
            break;
        case '\'':
            quoted += "&#39;";
            break;
        default:
            quoted += c;
        }
    }
    return quoted;
}

std::string Element(const char* name, const char* kind, std::string_view text)
{
    const std::string attribute = *kind == '\0' ? std::string() : " class=\"" + std::string(kind) + '"';
    return '<' + std::string(name) + attribute + '>' + Quoted(text) + "</" + name + '>';
}

std::string Table(const char* heading, const std::vector<Variable>& variables)
{
    if (variables.empty())
        return "";
    std::string table = Element("h3", "", heading) + "<table>\n";
    for (const Variable& variable : variables)
        table += "<tr>" + Element("td", "", variable.name) + Element("td", "type", TypeOf(variable)) +
                 Element("td", "value", ValueOf(variable)) + Element("td", "soft", RegisterOf(variable)) + "</tr>\n";
    return table + "</table>\n";
}

std::string Source(const std::vector<SourceLine>& source)
{
    std::string lines;
    for (const SourceLine& line : source)
        lines += std::string(line.isWhere ? "<span class=\"here\">" : "<span>") +
                 Element("i", "", std::to_string(line.number)) + Quoted(line.text) + "</span>";
    return lines.empty() ? "" : "<pre>" + lines + "</pre>\n";
}

std::string Section(const Frame& frame, const Module* module, const std::vector<SourceLine>& source, std::size_t number,
                    bool isOpen)
{
    std::string where = module != nullptr ? std::string(NameOf(module->path)) : std::string();
    if (!frame.path.empty())
        where += (where.empty() ? "" : " · ") + frame.path + ':' + frame.line;
    return std::string("<details class=\"frame\"") + (isOpen ? " open" : "") + "><summary>" +
           Element("span", "number", '#' + std::to_string(number)) + Element("span", "function", frame.function) +
           Element("span", "where", where) + "</summary>\n<div class=\"inside\">" +
           Element("p", "where",
                   "At " + frame.address + ", " + frame.displacement + " into the function; frame " +
                       frame.frameAddress) +
           '\n' + Source(source) + Table("Parameters", frame.parameters) + Table("Local variables", frame.locals) +
           "</div></details>\n";
}

std::string Modules(const Report& report)
{
    std::string table;
    for (const Module& module : report.modules)
        table += "<tr>" + Element("td", "", module.path) + Element("td", "soft", module.version) +
                 Element("td", "soft", module.time) + Element("td", "soft", module.base + " +0x" + module.size) +
                 "</tr>\n";
    return "<details class=\"plain\"><summary>" + std::to_string(report.modules.size()) +
           " modules</summary>\n<div class=\"inside\"><table>\n" + table + "</table></div></details>\n";
}

std::string Log(const std::vector<std::string>& log)
{
    if (log.empty())
        return "";
    std::string lines;
    for (const std::string& line : log)
        lines += Element("span", "", line);
    return "<h2>Log</h2>\n<pre class=\"plain\">" + lines + "</pre>\n";
}

}

std::string PageText(const Report& report, const std::vector<std::string>& log, const std::string& title)
{
    const std::string program(NameOf(report.program));
    const std::string headline = report.description.empty() ? "Code " + report.code : report.description;
    std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
                       "'unsafe-inline'; script-src '" +
                       std::string(scriptDigest) +
                       "'\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n" +
                       Element("title", "", program + ": " + headline) + "\n<style>" + style +
                       "</style>\n</head>\n<body>\n<header>\n" + Element("h1", "", headline) +
                       Element("p", "", program + " stopped at " + report.address + ", code " + report.code) +
                       Element("p", "", report.path) + Element("p", "", title);
    if (!report.system.empty())
        page += Element("p", "", "System " + report.system);
    page += "\n</header>\n";
    if (!report.isWhole)
        page += Element("p", "cut", "This report has no end: something kept it from being written to the last line.");
    page += "<div class=\"tools\"><input id=\"filter\" type=\"search\" placeholder=\"Filter by name\" "
            "aria-label=\"Filter by name\"><span id=\"told\" class=\"count\"></span></div>\n<h2>Stack</h2>\n";
    constexpr unsigned long distance = 4;
    Sources sources(distance);
    const ModuleMap modules(report);
    bool isOneOpen = false;
    for (std::size_t i = 0; i != report.stack.size(); ++i)
    {
        // The first that can tell something.
        const Frame& frame = report.stack[i];
        const bool isOpen = !isOneOpen && (!frame.path.empty() || !frame.parameters.empty() || !frame.locals.empty());
        isOneOpen = isOneOpen || isOpen;
        page += Section(frame, modules.At(frame.address), sources.LinesAround(frame), i, isOpen);
    }
    if (report.stack.empty())
        page += Element("p", "where", "The report has no stack.");
    return page + Log(log) + "<h2>Modules</h2>\n" + Modules(report) + "<script>" + script +
           "</script>\n</body>\n</html>\n";
}

}
