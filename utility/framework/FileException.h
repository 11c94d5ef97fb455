#pragma once

// The failure of a file operation: what kind of failure, the system's error number, and the path.

#include "utility/framework/Exception.h"
#include "utility/platform/Types.h"

#include <cstdint>
#include <string>

class UTILITY_API CFileException : public CException
{
public:
    /// What kind of failure it is.
    enum Cause
    {
        none,             ///< no failure
        genericException, ///< of no kind below
        fileNotFound,     ///< no such file
        badPath,          ///< a folder on the way to it is not there, or the name is none
        tooManyOpenFiles, ///< the process or the system can open no more
        accessDenied,     ///< it is not allowed
        invalidFile,      ///< the handle is of no open file
        removeCurrentDir, ///< a current folder cannot be removed
        directoryFull,    ///< a folder takes no more names
        badSeek,          ///< a position that there is not
        hardIO,           ///< the device has failed
        sharingViolation, ///< somebody else has it open
        lockViolation,    ///< somebody else has locked it
        diskFull,         ///< there is no room
        endOfFile,        ///< there is nothing behind the end
    };

    /// A null file name is an empty one.
    explicit CFileException(int cause = none, std::int32_t osError = -1, const wchar_t* fileName = nullptr);
    ~CFileException() override;

    /// The cause in words of the display language, with the path and, where the system has one in that language, its
    /// own message.
    int GetErrorMessage(wchar_t* buffer, unsigned int bufferSize, unsigned int* helpContext) override;

    /// The cause that stands for a system's error number, which is a Windows one on every system.
    static Cause OsErrorToException(std::int32_t osError);

    /// Throws a new failure, as a pointer.
    [[noreturn]] static void ThrowOsError(std::int32_t osError, const wchar_t* fileName = nullptr);

    int m_cause;             ///< one of Cause
    std::int32_t m_lOsError; ///< the system's error number, -1 for none
    /// The path as it was given to what failed; empty for none.
    std::wstring m_strFileName;
};
