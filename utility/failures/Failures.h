#pragma once

// The failure types. Four unrelated roots stand side by side, and a caller catches each by its own type:
//
//   CError                     a severity and a wide message; CTextError adds an offset
//   CSourceLocationException   a std::runtime_error whose text is UTF-8; CInputRecordException, CTextRecordException
//   COSException               a framework failure (see framework/Exception.h) with a system's error number
//   AlgorithmFailure           a file, a line and a narrow message
//
//     throw CTextRecordException(__FILE__, __LINE__, 8303, cursor);
//
// Nearly all are for the modules above the library to throw; the library itself throws
// ThrowSourceLocationException's alone, and the file failure of framework/FileException.h. A failure is complete once
// built and may cross threads, but for the place in a CTextRecordException.

#include "utility/framework/Exception.h"
#include "utility/platform/Error.h"
#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <cstdint>
#include <stdexcept>
#include <string>

class UTILITY_API CError
{
public:
    /// The library stores a severity and gives it back; only the order of the levels has a meaning.
    enum SEVERITY : std::int32_t
    {
        SeverityNone = 0,
        SeverityInformation = 1,
        SeverityWarning = 2,
        SeverityError = 4,
    };

    CError(SEVERITY severity, std::wstring message);
    CError(SEVERITY severity, const wchar_t* message);
    CError(const CError&) = default;
    CError& operator=(const CError&) = default;
    virtual ~CError();

    SEVERITY Severity() const;
    const std::wstring& Message() const;

private:
    SEVERITY m_eSeverity;
    std::wstring m_strMessage;
};

class UTILITY_API CTextError : public CError
{
public:
    /// Takes the text out of `message`, which is empty afterwards.
    CTextError(SEVERITY severity, std::wstring&& message, std::uint64_t offset);
    CTextError(const CTextError&) = default;
    CTextError& operator=(const CTextError&) = default;
    ~CTextError() override;

    /// The position in the text that the failure concerns.
    std::uint64_t Offset() const;

private:
    std::uint64_t m_nOffset;
};

/// A numbered message, in UTF-8, with where it was thrown. A number without a string gives an empty message.
class UTILITY_API CSourceLocationException : public std::runtime_error
{
public:
    /// "<message> [exception thrown from <file>, line <line>.]"
    CSourceLocationException(const char* file, int line, unsigned int messageId);
    /// "<message> [exception thrown]"
    explicit CSourceLocationException(unsigned int messageId = 0);
    CSourceLocationException(const CSourceLocationException&) = default;
    CSourceLocationException& operator=(const CSourceLocationException&) = default;
    ~CSourceLocationException() override;
};

/// Throws a CSourceLocationException. `file` and `line` are deliberately ignored: its text never has a location.
[[noreturn]] UTILITY_API void ThrowSourceLocationException(const char* file, int line, unsigned int messageId);

/// A failure in a binary record, with an empty message and a detail that only the thrower knows the meaning of.
class UTILITY_API CInputRecordException : public CSourceLocationException
{
public:
    CInputRecordException(const char* file, int line, DWORD detail);
    CInputRecordException(const CInputRecordException&) = default;
    CInputRecordException& operator=(const CInputRecordException&) = default;
    ~CInputRecordException() override;

private:
    [[maybe_unused]] DWORD m_nDetail;
};

/// A failure at a place in a text record. The place points into the mapped file: it dies with it.
class UTILITY_API CTextRecordException : public CSourceLocationException
{
public:
    CTextRecordException(const char* file, int line, unsigned int messageId, const char* place);
    CTextRecordException(const CTextRecordException&) = default;
    CTextRecordException& operator=(const CTextRecordException&) = default;
    ~CTextRecordException() override;

    const char* Place() const;

private:
    const char* m_pPlace;
};

/// A failure of the operating system. To be made on the thread whose latest error it records.
class UTILITY_API COSException : public CException
{
public:
    /// Records the calling thread's latest error, be it the library's or that of a call of the host's own, or a given
    /// one (a Windows error number on every system).
    explicit COSException(DWORD error = utility::platform::LatestError());
    ~COSException() override;

    /// The system's message for the error, in the language of the calling thread. 0 if there is none, or if it does
    /// not fit into `buffer`; `helpContext` may be null and otherwise receives 0.
    int GetErrorMessage(wchar_t* buffer, unsigned int bufferSize, unsigned int* helpContext) override;

private:
    DWORD m_nError;
};

class UTILITY_API AlgorithmFailure
{
public:
    AlgorithmFailure(const char* file, int line);
    AlgorithmFailure(const char* file, int line, const char* message);

    const std::string& FileName() const;
    unsigned int LineNumber() const;
    /// Deliberately a copy, unlike FileName.
    const std::string Message() const;

private:
    std::string m_strFileName;
    int m_nLine;
    std::string m_strMessage;
};
