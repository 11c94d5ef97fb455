#include "utility/framework/FileException.h"

#include "resources/StringIds.h"
#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/ErrorCodes.h"
#include "utility/platform/Text.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <string_view>

namespace resources = utility::resources;
using utility::framework::FrameworkString;

namespace
{

std::wstring_view WordsFor(int cause)
{
    static_assert(resources::EndOfFile - resources::NoFileFailure == CFileException::endOfFile);
    const bool isKnown = cause >= CFileException::none && cause <= CFileException::endOfFile;
    return FrameworkString(resources::NoFileFailure +
                           static_cast<UINT>(isKnown ? cause : CFileException::genericException));
}

/// The system's message in the language of the words, without the line end and full stop that some end with.
std::wstring SystemWords(std::int32_t osError)
{
    wchar_t text[512];
    const std::wstring language(FrameworkString(resources::LanguageOfTexts));
    const DWORD length = utility::platform::Text().SystemMessage(
        static_cast<DWORD>(osError), static_cast<DWORD>(std::wcstoul(language.c_str(), nullptr, 16)), text,
        static_cast<DWORD>(std::size(text)));
    std::wstring words(text, length);
    words.erase(std::min(words.find_last_not_of(L"\r\n .\u3002") + 1, words.size()));
    return words;
}

}

CFileException::CFileException(int cause, std::int32_t osError, const wchar_t* fileName)
    : m_cause(cause), m_lOsError(osError), m_strFileName(fileName == nullptr ? L"" : fileName)
{
}

CFileException::~CFileException() = default;

int CFileException::GetErrorMessage(wchar_t* buffer, unsigned int bufferSize, unsigned int* helpContext)
{
    if (helpContext != nullptr)
        *helpContext = 0;
    if (buffer == nullptr || bufferSize == 0)
        return 0;
    std::wstring text(WordsFor(m_cause));
    if (!m_strFileName.empty())
        text += L": " + m_strFileName;
    const std::wstring system = m_lOsError > 0 ? SystemWords(m_lOsError) : std::wstring();
    if (!system.empty())
        text += L" (" + system + L")";
    buffer[text.copy(buffer, bufferSize - 1)] = L'\0';
    return 1;
}

CFileException::Cause CFileException::OsErrorToException(std::int32_t osError)
{
    switch (osError)
    {
    case ERROR_SUCCESS:
        return none;
    case ERROR_FILE_NOT_FOUND:
        return fileNotFound;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_INVALID_NAME:
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_CANT_RESOLVE_FILENAME:
        return badPath;
    case ERROR_TOO_MANY_OPEN_FILES:
        return tooManyOpenFiles;
    case ERROR_ACCESS_DENIED:
    case ERROR_INVALID_ACCESS:
    case ERROR_WRITE_PROTECT:
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return accessDenied;
    case ERROR_INVALID_HANDLE:
        return invalidFile;
    case ERROR_CURRENT_DIRECTORY:
        return removeCurrentDir;
    case ERROR_SEEK:
    case ERROR_NEGATIVE_SEEK:
        return badSeek;
    case ERROR_WRITE_FAULT:
    case ERROR_READ_FAULT:
    case ERROR_GEN_FAILURE:
        return hardIO;
    case ERROR_SHARING_VIOLATION:
        return sharingViolation;
    case ERROR_LOCK_VIOLATION:
        return lockViolation;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return diskFull;
    case ERROR_HANDLE_EOF:
        return endOfFile;
    default:
        return genericException;
    }
}

void CFileException::ThrowOsError(std::int32_t osError, const wchar_t* fileName)
{
    throw new CFileException(OsErrorToException(osError), osError, fileName);
}
