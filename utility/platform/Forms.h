#pragma once

// Dialogs as the exchange of their data (framework/DataExchange.h) sees them: fields of text, each with a number, and a
// box for what the user is to be told. A host implements a form over its own widgets; on Windows there is one over
// windows, WindowForm, and on both systems one that asks on a terminal (framework/TerminalForm.h). A form is for the
// thread of its dialog.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

/// The fields of a dialog, and its box.
class Form
{
public:
    /// For what implements it.
    Form() = default;
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;
    virtual ~Form() = default;

    /// Whether there is a field with this number, now: fields may come and go.
    virtual bool HasField(int id) = 0;

    /// Copies the text of a field, null-terminated and cut to `size` characters with the null. A field that is not
    /// there has an empty text. `size` is at least 1.
    virtual void Text(int id, wchar_t* buffer, int size) = 0;

    /// Nothing is done to a field that is not there.
    virtual void SetText(int id, const wchar_t* text) = 0;

    /// Brings the user to a field, with its text ready to be typed over.
    virtual void Focus(int id) = 0;

    /// Tells the user, and waits until they have seen it. The style is that of a message box on Windows: 0 is plain,
    /// 0x30 a warning. The number of a help topic is -1 for that of the text, and 0 for none.
    virtual void ShowBox(const wchar_t* text, UINT style, int helpTopic) = 0;
};

#ifdef _WIN32
/// A dialog window and its edit controls. The window is the host's, and outlives the form.
class UTILITY_API WindowForm final : public Form
{
public:
    /// Of a dialog whose controls are there already.
    explicit WindowForm(HWND dialog);

    bool HasField(int id) override;
    void Text(int id, wchar_t* buffer, int size) override;
    void SetText(int id, const wchar_t* text) override;
    void Focus(int id) override;
    /// A message box with the title of the dialog.
    void ShowBox(const wchar_t* text, UINT style, int helpTopic) override;

private:
    HWND m_dialog;
};
#endif

}
