#include "utility/failures/Failures.h"

#include "utility/platform/Locale.h"
#include "utility/platform/Text.h"
#include "utility/text/ResourceString.h"

#include <boost/format.hpp>

#include <utility>

namespace
{

std::string Utf8Message(unsigned int messageId) { return from_utf(resource_string(messageId), CP_UTF8); }

}

CError::CError(SEVERITY severity, std::wstring message) : m_eSeverity(severity), m_strMessage(std::move(message)) {}

CError::CError(SEVERITY severity, const wchar_t* message) : m_eSeverity(severity), m_strMessage(message) {}

CError::~CError() = default;

CError::SEVERITY CError::Severity() const { return m_eSeverity; }

const std::wstring& CError::Message() const { return m_strMessage; }

CTextError::CTextError(SEVERITY severity, std::wstring&& message, std::uint64_t offset)
    : CError(severity, std::exchange(message, {})), m_nOffset(offset)
{
}

CTextError::~CTextError() = default;

std::uint64_t CTextError::Offset() const { return m_nOffset; }

// The line is made text here, since the format would group its digits as the global locale says.
CSourceLocationException::CSourceLocationException(const char* file, int line, unsigned int messageId)
    : std::runtime_error((boost::format("%1% [exception thrown from %2%, line %3%.]") % Utf8Message(messageId) % file %
                          std::to_string(line))
                             .str())
{
}

CSourceLocationException::CSourceLocationException(unsigned int messageId)
    : std::runtime_error((boost::format("%1% [exception thrown]") % Utf8Message(messageId)).str())
{
}

CSourceLocationException::~CSourceLocationException() = default;

void ThrowSourceLocationException(const char* /*file*/, int /*line*/, unsigned int messageId)
{
    throw CSourceLocationException(messageId);
}

CInputRecordException::CInputRecordException(const char* file, int line, DWORD detail)
    : CSourceLocationException(file, line, 0), m_nDetail(detail)
{
}

CInputRecordException::~CInputRecordException() = default;

CTextRecordException::CTextRecordException(const char* file, int line, unsigned int messageId, const char* place)
    : CSourceLocationException(file, line, messageId), m_pPlace(place)
{
}

CTextRecordException::~CTextRecordException() = default;

const char* CTextRecordException::Place() const { return m_pPlace; }

COSException::COSException(DWORD error) : m_nError(error) {}

COSException::~COSException() = default;

int COSException::GetErrorMessage(wchar_t* buffer, unsigned int bufferSize, unsigned int* helpContext)
{
    if (helpContext != nullptr)
        *helpContext = 0;
    const DWORD language = utility::platform::WithDefaultSublanguage(utility::platform::Locale().ThreadLocale());
    return utility::platform::Text().SystemMessage(m_nError, language, buffer, bufferSize) != 0 ? 1 : 0;
}

AlgorithmFailure::AlgorithmFailure(const char* file, int line) : m_strFileName(file), m_nLine(line) {}

AlgorithmFailure::AlgorithmFailure(const char* file, int line, const char* message)
    : m_strFileName(file), m_nLine(line), m_strMessage(message)
{
}

const std::string& AlgorithmFailure::FileName() const { return m_strFileName; }

unsigned int AlgorithmFailure::LineNumber() const { return static_cast<unsigned int>(m_nLine); }

const std::string AlgorithmFailure::Message() const { return m_strMessage; }
