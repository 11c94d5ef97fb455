#include "utility/framework/TerminalForm.h"

#include "utility/platform/Text.h"

#include <algorithm>
#include <cerrno>
#include <istream>
#include <ostream>
#include <string_view>
#include <utility>

namespace utility::framework
{

namespace
{

/// A signal that interrupts the reading is not the end of the input, though a stream over the C library says so.
bool ReadLine(std::istream& in, std::string& line)
{
    for (std::string part;; in.clear())
    {
        errno = 0;
        std::getline(in, part);
        line += part;
        if (!in.eof() || errno != EINTR)
            return !in.bad() && (!in.fail() || !line.empty());
    }
}

}

TerminalForm::TerminalForm(std::istream& in, std::ostream& out, std::vector<Field> fields)
    : m_in(in), m_out(out), m_fields(std::move(fields))
{
}

bool TerminalForm::Edit()
{
    const Field* const only = std::exchange(m_inQuestion, nullptr);
    return std::ranges::all_of(m_fields,
                               [&](Field& field) { return (only != nullptr && only != &field) || Ask(field); });
}

bool TerminalForm::HasField(int id) { return Find(id) != nullptr; }

void TerminalForm::Text(int id, wchar_t* buffer, int size)
{
    const Field* const field = Find(id);
    buffer[field == nullptr ? 0 : field->text.copy(buffer, static_cast<std::size_t>(size) - 1)] = L'\0';
}

void TerminalForm::SetText(int id, const wchar_t* text)
{
    if (Field* const field = Find(id))
        field->text = text;
}

void TerminalForm::Focus(int id) { m_inQuestion = Find(id); }

void TerminalForm::ShowBox(const wchar_t* text, UINT /*style*/, int /*helpTopic*/)
{
    m_out << platform::CodePageFromWide(CP_ACP, text) << '\n' << std::flush;
}

TerminalForm::Field* TerminalForm::Find(int id)
{
    const auto found = std::ranges::find(m_fields, id, &Field::id);
    return found == m_fields.end() ? nullptr : &*found;
}

bool TerminalForm::Ask(Field& field)
{
    m_out << platform::CodePageFromWide(CP_ACP, field.label) << " [" << platform::CodePageFromWide(CP_ACP, field.text)
          << "]: " << std::flush;
    std::string line;
    if (!ReadLine(m_in, line))
        return false;
    if (line.ends_with('\r'))
        line.pop_back();
    if (!line.empty())
    {
        field.text = platform::WideFromCodePage(CP_ACP, line);
        std::ranges::replace(field.text, L'\0', L'\uFFFD'); // a null would hide what follows it
    }
    return true;
}

}
