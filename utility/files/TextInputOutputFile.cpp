#include "utility/files/TextInputOutputFile.h"

CTextInputOutputFile::CTextInputOutputFile() = default;

CTextInputOutputFile::CTextInputOutputFile(const boost::filesystem::path& path) : CInputOutputFile(path) {}

CTextInputOutputFile::~CTextInputOutputFile() = default;

const char* CTextInputOutputFile::DataPtr() const { return static_cast<const char*>(GetBase()); }

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
