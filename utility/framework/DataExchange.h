#pragma once

// The data of a dialog, brought into its fields and back by the same calls, of the framework and of units/DialogData.h:
//
//     const auto exchangeTool = [&](CDataExchange* exchange)
//     {
//         DDX_Distance(exchange, 1001, diameter);
//         DDV_MinDistanceEx(exchange, diameter, 0.0);
//     };
//     CDataExchange show(form, false);
//     exchangeTool(&show);
//     edit();
//     CDataExchange save(form, true);
//     exchangeTool(&save); // throws CUserException once a value is refused and the user has been told
//     assert(diameter == 12.0);
//
// For the thread of the dialog.

#include "utility/framework/Exception.h"
#include "utility/platform/Forms.h"

#include <string>

/// The user has been told already: whoever catches it has nothing to say.
class UTILITY_API CUserException final : public CException
{
};

/// A program asks for what it does not have, such as a field that is not on its form.
class UTILITY_API CNotSupportedException final : public CException
{
};

class UTILITY_API CDataExchange
{
public:
    /// An edit control of the form.
    class EditControl
    {
    public:
        /// Of a form that outlives it.
        EditControl(utility::platform::Form& form, int id) : m_form(form), m_id(id) {}

        /// The text, null-terminated and cut to `size` characters with the null.
        void Text(wchar_t* buffer, int size) const { m_form.Text(m_id, buffer, size); }
        /// Replaces the text.
        void SetText(const std::wstring& text) const { m_form.SetText(m_id, text.c_str()); }

    private:
        utility::platform::Form& m_form;
        int m_id;
    };

    /// A pass over the fields of a form, which outlives it.
    CDataExchange(utility::platform::Form& form, bool saveAndValidate);

    /// Whether values are brought from the fields to the variables, rather than shown.
    bool m_bSaveAndValidate;

    /// An edit control that is now the one in question. Throws CNotSupportedException if the form does not have it.
    EditControl PrepareEditCtrl(int id);

    /// Brings the user to the control in question, if there is one, and throws CUserException.
    [[noreturn]] void Fail();

    /// Tells the user (see platform/Forms.h), then fails.
    [[noreturn]] void Refuse(const std::wstring& text, UINT style, int helpTopic);

private:
    utility::platform::Form& m_form;
    bool m_isPrepared = false;
    int m_id = 0;
};

/// The framework's validators of a range. A value from `minimum` to `maximum` passes, a NaN too, and any while values
/// are shown. The bounds are told to the user with 6 significant digits for a float and 15 for a double.
UTILITY_API void DDV_MinMaxFloat(CDataExchange* exchange, const float& value, float minimum, float maximum);
UTILITY_API void DDV_MinMaxDouble(CDataExchange* exchange, const double& value, double minimum, double maximum);
