#pragma once

// A text file that issues numbered messages, and its characters. See files/InputOutputFile.h.

#include "utility/files/InputOutputFile.h"

class UTILITY_API CTextInputOutputFile : public CInputOutputFile
{
public:
    /// Closed.
    CTextInputOutputFile();
    /// Open to read; test IsValid afterwards.
    explicit CTextInputOutputFile(const boost::filesystem::path& path);
    CTextInputOutputFile(const CTextInputOutputFile&) = default;
    CTextInputOutputFile& operator=(const CTextInputOutputFile&) = default;
    ~CTextInputOutputFile() override;

    /// The first character of the view, null when closed.
    const char* DataPtr() const;

    /// Issues the message with this number, filled with the arguments as LoadMessage does. A warning needs verbose
    /// messages too. `place` is deliberately ignored: a message tells no position.
    void IssueWarning(const char* place, int messageId, ...);
    void IssueError(const char* place, int messageId, ...);
};
