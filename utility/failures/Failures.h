#pragma once

// The failure types. Four unrelated roots stand side by side, and a caller catches each by its own type:
//
//   CError                     a severity and a wide message; CTextError adds an offset
//   CSourceLocationException   a std::runtime_error whose text is UTF-8; CInputRecordException, CTextRecordException
//   COSException               a framework failure (see framework/Exception.h) with a system's error number
//   AlgorithmFailure           a file, a line and a narrow message
//
// Nearly all are for the modules above the library to throw; the library itself throws
// ThrowSourceLocationException's alone, and the file failure of framework/FileException.h. A failure is complete once
// built and may cross threads, but for the place in a CTextRecordException.
//
//     throw CTextRecordException(__FILE__, __LINE__, 8303, cursor);

#include "utility/framework/Exception.h"
#include "utility/platform/Error.h"
#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <cstdint>
#include <stdexcept>
#include <string>

/// A failure with a severity and a wide text for the user.
class UTILITY_API CError
{
public:
    /// The library stores a severity and gives it back; only the order of the levels has a meaning.
    enum SEVERITY : std::int32_t
    {
        SeverityNone = 0,        ///< below all others
        SeverityInformation = 1, ///< worth knowing
        SeverityWarning = 2,     ///< may be wrong
        SeverityError = 4,       ///< is wrong
    };

    /// The message is copied; it may not be a null pointer.
    CError(SEVERITY severity, std::wstring message);
    CError(SEVERITY severity, const wchar_t* message);
    CError(const CError&) = default;
    CError& operator=(const CError&) = default;
    virtual ~CError();

    /// As given to the constructor.
    SEVERITY Severity() const;
    /// The text, which lives as long as the failure.
    const std::wstring& Message() const;

private:
    SEVERITY m_eSeverity;
    std::wstring m_strMessage;
};

/// A failure at a place in a text.
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
    /// The text of what() has the file, which may not be null, and the line.
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
    /// The text of what() has the message, the file, which may not be null, and the line, but not the place.
    CTextRecordException(const char* file, int line, unsigned int messageId, const char* place);
    CTextRecordException(const CTextRecordException&) = default;
    CTextRecordException& operator=(const CTextRecordException&) = default;
    ~CTextRecordException() override;

    /// Where in the record it was; a cursor converts to it.
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

/// A computation that could not be done, with the place in the source where that was noticed.
class UTILITY_API AlgorithmFailure
{
public:
    /// Without a message.
    AlgorithmFailure(const char* file, int line);
    /// The texts are copied and may not be null.
    AlgorithmFailure(const char* file, int line, const char* message);

    /// The source file as given, which is `__FILE__` as a rule.
    const std::string& FileName() const;
    /// The line in that file.
    unsigned int LineNumber() const;
    /// Deliberately a copy, unlike FileName.
    const std::string Message() const;

private:
    std::string m_strFileName;
    int m_nLine;
    std::string m_strMessage;
};
