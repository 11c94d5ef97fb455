#pragma once

// A form that asks its user line by line, on a terminal or any other pair of streams.
//
//     utility::framework::TerminalForm form(in, out, {{1001, L"Diameter"}, {1002, L"Length"}});
//     show(form);
//     while (form.Edit() && !save(form)) // after a refusal it asks for the field in question alone
//         ;
//
// Texts are in the system's narrow encoding (UTF-8 on Linux). For one thread.

#include "utility/platform/Forms.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace utility::framework
{

class UTILITY_API TerminalForm final : public platform::Form
{
public:
    /// A line of the form.
    struct Field
    {
        int id;                 ///< its number, as the exchange of data has it
        std::wstring label;     ///< what the user is asked for
        std::wstring text = {}; ///< what stands in it
    };

    /// The streams outlive the form.
    TerminalForm(std::istream& in, std::ostream& out, std::vector<Field> fields);

    /// Asks for the field in question, or where none is for all, each with its label and what stands in it, which an
    /// empty line leaves. A null character that is typed becomes U+FFFD. False at the end of the input, which a signal
    /// that interrupts the reading is not.
    bool Edit();

    bool HasField(int id) override;
    void Text(int id, wchar_t* buffer, int size) override;
    void SetText(int id, const wchar_t* text) override;
    /// The field is in question until it has been asked for.
    void Focus(int id) override;
    /// Writes the text on a line of its own.
    void ShowBox(const wchar_t* text, UINT style, int helpTopic) override;

private:
    UTILITY_LOCAL Field* Find(int id);
    UTILITY_LOCAL bool Ask(Field& field);

    std::istream& m_in;
    std::ostream& m_out;
    std::vector<Field> m_fields;
    const Field* m_inQuestion = nullptr;
};

}
