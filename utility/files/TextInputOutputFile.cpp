#include "utility/files/TextInputOutputFile.h"

CTextInputOutputFile::CTextInputOutputFile() = default;

CTextInputOutputFile::CTextInputOutputFile(const wchar_t* path) : CInputOutputFile(path) {}

CTextInputOutputFile::CTextInputOutputFile(const std::wstring& path) : CInputOutputFile(path) {}

CTextInputOutputFile::CTextInputOutputFile(const boost::filesystem::path& path) : CInputOutputFile(path) {}

CTextInputOutputFile::~CTextInputOutputFile() = default;

const char* CTextInputOutputFile::DataPtr() const { return static_cast<const char*>(GetBase()); }

TextPosition CTextInputOutputFile::PositionOf(const char* place) const
{
    const char* const begin = DataPtr();
    const auto offset = reinterpret_cast<std::uintptr_t>(place) - reinterpret_cast<std::uintptr_t>(begin);
    if (begin == nullptr || offset > GetFileSize())
        return {};
    TextPosition position{1, 1};
    for (const char* at = begin; at != place; ++at)
    {
        const bool isAheadOfLineFeed = at + 1 != begin + GetFileSize() && at[1] == '\n';
        if (*at == '\n' || (*at == '\r' && !isAheadOfLineFeed))
            position = {position.line + 1, 1};
        else
            ++position.column;
    }
    return position;
}

void CTextInputOutputFile::IssueWarning(const char* /*place*/, int messageId, ...)
{
    std::va_list arguments;
    va_start(arguments, messageId);
    Issue(IssueMessages() && VerboseMessages(), LogSeverityWarning, messageId, arguments);
    va_end(arguments);
}

void CTextInputOutputFile::IssueError(const char* /*place*/, int messageId, ...)
{
    std::va_list arguments;
    va_start(arguments, messageId);
    Issue(IssueMessages(), LogSeverityError, messageId, arguments);
    va_end(arguments);
}
