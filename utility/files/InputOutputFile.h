#pragma once

// A file that issues numbered messages about its contents.
//
//     CInputOutputFile file(path); // maps it; throws CFileException if it cannot be opened
//     if (file.IsValid() && !LooksRight(file.GetBase()))
//         file.IssueError(messageId);
//
// A message goes to the log store of the calling thread's database (see logging/ThreadDatabase.h), and only while debug
// messages are on (SetLogDebugMessages); otherwise it has the severity LogSeverityNone, which the log level keeps out
// as a rule. Issuing changes neither the file nor a record, and throws nothing but for lack of memory.
//
// An object belongs to one thread at a time, but any thread that reads its bytes may issue.

#include "utility/files/MemoryMappedFile.h"
#include "utility/logging/LogSeverity.h"

#include <cstdarg>

class UTILITY_API CInputOutputFile : public CMemoryMappedFile
{
public:
    /// Closed.
    CInputOutputFile();
    /// Open to read; test IsValid afterwards.
    explicit CInputOutputFile(const wchar_t* path);
    explicit CInputOutputFile(const std::wstring& path);
    explicit CInputOutputFile(const boost::filesystem::path& path);
    /// An alias of the same open file, like every copy of a file object.
    CInputOutputFile(const CInputOutputFile&) = default;
    CInputOutputFile& operator=(const CInputOutputFile&) = default;
    virtual ~CInputOutputFile();

    /// Whether messages are issued at all. On at first.
    void SetIssueMessages(bool issue);
    bool IssueMessages() const;

    /// Whether warnings about a text file are issued; a binary file's warnings deliberately ignore it. On at first.
    void SetVerboseMessages(bool verbose);
    bool VerboseMessages() const;

    /// Issues the message with this number, filled with the arguments as LoadMessage does.
    void IssueWarning(int messageId, ...);
    void IssueError(int messageId, ...);

protected:
    /// Issues a message if `gate` is open; otherwise the arguments are not looked at.
    static void Issue(bool gate, LogSeverity severity, int messageId, std::va_list arguments);

private:
    bool m_bIssueMessages = true;
    bool m_bVerboseMessages = true;
};
