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

/// A wide text with its length.
class UTILITY_API CStringW
{
public:
    /// The empty text.
    CStringW();
    CStringW(const wchar_t* text); ///< null is the empty text
    /// The first characters of a text, null characters among them; the length may not be negative.
    CStringW(const wchar_t* text, int length);

    /// The text, null-terminated; until the string is changed.
    const wchar_t* GetString() const;
    operator const wchar_t*() const;
    /// In characters, without the null at the end.
    int GetLength() const;
    /// Whether the length is 0.
    bool IsEmpty() const;
    /// Makes the text the empty one.
    void Empty();
    /// Appends a text.
    CStringW& operator+=(const CStringW& text);

    /// Replaces the text by a printf-style one; the directives have the Windows meaning on every system. The decimal
    /// symbol is the point in every locale, `%c` takes any character, and `%Lf` a long double.
    void Format(const wchar_t* format, ...);

    /// Replaces the text by a numbered string, found along the chain of resource modules or in one module. False, and
    /// the empty text, if there is none.
    bool LoadString(unsigned int id) { return Load(id); }
    bool LoadString(HINSTANCE module, unsigned int id) { return Load(module, id); }

    /// Whether the characters are the same, whatever the locale; those behind a null count for two strings.
    friend bool operator==(const CStringW& left, const CStringW& right) { return left.m_text == right.m_text; }
    friend bool operator==(const CStringW& left, const wchar_t* right) { return left.m_text == right; }

private:
    // A name that no macro of <windows.h> changes, and in another way for hosts without UNICODE.
    bool Load(unsigned int id);
    bool Load(HINSTANCE module, unsigned int id);

    std::wstring m_text;
};
