#include "utility/files/InputOutputFile.h"

#include "utility/logging/LogStream.h"
#include "utility/logging/ThreadDatabase.h"
#include "utility/text/Messages.h"

CInputOutputFile::CInputOutputFile() = default;

CInputOutputFile::CInputOutputFile(const wchar_t* path) : CMemoryMappedFile(path) {}

CInputOutputFile::CInputOutputFile(const std::wstring& path) : CMemoryMappedFile(path) {}

CInputOutputFile::CInputOutputFile(const boost::filesystem::path& path) : CMemoryMappedFile(path) {}

CInputOutputFile::~CInputOutputFile() = default;

void CInputOutputFile::SetIssueMessages(bool issue) { m_bIssueMessages = issue; }

bool CInputOutputFile::IssueMessages() const { return m_bIssueMessages; }

void CInputOutputFile::SetVerboseMessages(bool verbose) { m_bVerboseMessages = verbose; }

bool CInputOutputFile::VerboseMessages() const { return m_bVerboseMessages; }

void CInputOutputFile::IssueWarning(int messageId, ...)
{
    std::va_list arguments;
    va_start(arguments, messageId);
    Issue(IssueMessages(), LogSeverityWarning, messageId, arguments);
    va_end(arguments);
}

void CInputOutputFile::IssueError(int messageId, ...)
{
    std::va_list arguments;
    va_start(arguments, messageId);
    Issue(IssueMessages(), LogSeverityError, messageId, arguments);
    va_end(arguments);
}

void CInputOutputFile::Issue(bool gate, LogSeverity severity, int messageId, std::va_list arguments)
{
    if (!gate)
        return;
    CLogStreamHelper stream(GetThreadDatabase(), LogDebugMessages() ? severity : LogSeverityNone);
    stream << LoadMessageVA(messageId, arguments);
}
