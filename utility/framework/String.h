#pragma once

// The framework's wide string: a value that formats, loads and converts itself.
//
//     CStringW text;
//     text.Format(L"%d entities in %s", 3, L"part.igs");
//     assert(text == L"3 entities in part.igs");
//
// A string belongs to one thread at a time. What cannot be loaded is the empty string. The class has no virtual
// operations, though others derive from it: delete an object as what it was made.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <string>

class UTILITY_API CStringW
{
public:
    CStringW();
    CStringW(const wchar_t* text); ///< null is the empty text
    CStringW(const wchar_t* text, int length);

    const wchar_t* GetString() const;
    operator const wchar_t*() const;
    int GetLength() const;
    bool IsEmpty() const;
    void Empty();
    CStringW& operator+=(const CStringW& text);

    /// Replaces the text by a printf-style one; the directives have the Windows meaning on every system. The decimal
    /// symbol is the point in every locale, `%c` takes any character, and `%Lf` a long double.
    void Format(const wchar_t* format, ...);

    /// Replaces the text by a numbered string, found along the chain of resource modules or in one module. False, and
    /// the empty text, if there is none.
    bool LoadString(unsigned int id) { return Load(id); }
    bool LoadString(HINSTANCE module, unsigned int id) { return Load(module, id); }

    friend bool operator==(const CStringW& left, const CStringW& right) { return left.m_text == right.m_text; }
    friend bool operator==(const CStringW& left, const wchar_t* right) { return left.m_text == right; }

private:
    // A name that no macro of <windows.h> changes, and in another way for hosts without UNICODE.
    bool Load(unsigned int id);
    bool Load(HINSTANCE module, unsigned int id);

    std::wstring m_text;
};
