#pragma once

#include "utility/platform/Text.h"

namespace support
{

/// A text service that hands everything to the one it was made over, unless told otherwise, and counts.
class ForwardingText : public utility::platform::TextService
{
public:
    ForwardingText() : m_system(utility::platform::Text()) {}

    int ToCodePage(UINT codePage, const wchar_t* text, int length, char* out, int capacity) override
    {
        ++conversions;
        return conversionsFail ? 0 : m_system.ToCodePage(codePage, text, length, out, capacity);
    }
    int FromCodePage(UINT codePage, const char* text, int length, wchar_t* out, int capacity) override
    {
        ++conversions;
        return conversionsFail ? 0 : m_system.FromCodePage(codePage, text, length, out, capacity);
    }
    DWORD SystemMessage(DWORD error, DWORD languageId, wchar_t* buffer, DWORD size) override
    {
        askedLanguage = languageId;
        return m_system.SystemMessage(error, languageId, buffer, size);
    }
    std::wstring WholeSystemMessage(DWORD error, DWORD languageId) override
    {
        askedLanguage = languageId;
        return m_system.WholeSystemMessage(error, languageId);
    }

    int conversions = 0;
    bool conversionsFail = false;
    DWORD askedLanguage = 0;

private:
    utility::platform::TextService& m_system;
};

}
