#pragma once

// The failure of a file operation: what kind of failure, the system's error number, and the path.

#include "utility/framework/Exception.h"
#include "utility/platform/Types.h"

#include <cstdint>
#include <string>

class UTILITY_API CFileException : public CException
{
public:
    enum Cause
    {
        none,
        genericException,
        fileNotFound,
        badPath,
        tooManyOpenFiles,
        accessDenied,
        invalidFile,
        removeCurrentDir,
        directoryFull,
        badSeek,
        hardIO,
        sharingViolation,
        lockViolation,
        diskFull,
        endOfFile,
    };

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
    std::wstring m_strFileName;
};
