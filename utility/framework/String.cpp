#include "utility/framework/String.h"

#include "utility/framework/internal/Format.h"
#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/Modules.h"

#include <cstdarg>

CStringW::CStringW() = default;

CStringW::CStringW(const wchar_t* text) : m_text(text == nullptr ? L"" : text) {}

CStringW::CStringW(const wchar_t* text, int length) : m_text(text, static_cast<std::size_t>(length)) {}

const wchar_t* CStringW::GetString() const { return m_text.c_str(); }

CStringW::operator const wchar_t*() const { return GetString(); }

int CStringW::GetLength() const { return static_cast<int>(m_text.size()); }

bool CStringW::IsEmpty() const { return m_text.empty(); }

void CStringW::Empty() { m_text.clear(); }

CStringW& CStringW::operator+=(const CStringW& text)
{
    m_text += text.m_text;
    return *this;
}

void CStringW::Format(const wchar_t* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    m_text = utility::framework::FormatWide(format, arguments);
    va_end(arguments);
}

bool CStringW::Load(unsigned int id)
{
    m_text = utility::framework::StringOfChain(id);
    return !m_text.empty();
}

bool CStringW::Load(HINSTANCE module, unsigned int id)
{
    m_text = utility::platform::Modules().StringOf(module, id);
    return !m_text.empty();
}
