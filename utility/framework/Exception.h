#pragma once

// The framework's failures. They are thrown as pointers to objects on the heap, and whoever catches one deletes it:
//
//     try
//     {
//         file.Open(L"part.igs");
//     }
//     catch (CException* failure)
//     {
//         wchar_t text[256];
//         failure->GetErrorMessage(text, 256, nullptr);
//         failure->Delete();
//         Show(text);
//     }
//
// A failure belongs to whoever holds it; one thread at a time.

#include "utility/framework/Object.h"

class UTILITY_API CException : public CObject
{
public:
    /// Without a text.
    CException();
    ~CException() override;

    /// Writes the text of the failure to `buffer`, null-terminated and cut to `bufferSize` characters with the null.
    /// `helpContext` may be null; otherwise it receives the number of a help topic, 0 for none.
    /// Gives 1 if there was a text and 0 if not, which is all that the base class knows.
    virtual int GetErrorMessage(wchar_t* buffer, unsigned int bufferSize, unsigned int* helpContext);

    /// Deletes a failure that was made by `new`.
    void Delete();
};
