#include "utility/platform/Text.h"

#include "utility/platform/SystemService.h"
namespace utility::platform
{

namespace
{

class WindowsText final : public TextService
{
public:
    int ToCodePage(UINT codePage, const wchar_t* text, int length, char* out, int capacity) override
    {
        return ::WideCharToMultiByte(codePage, 0, text, length, out, capacity, nullptr, nullptr);
    }

    int FromCodePage(UINT codePage, const char* text, int length, wchar_t* out, int capacity) override
    {
        return ::MultiByteToWideChar(codePage, 0, text, length, out, capacity);
    }

    DWORD SystemMessage(DWORD error, DWORD languageId, wchar_t* buffer, DWORD size) override
    {
        return ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, languageId,
                                buffer, size, nullptr);
    }

    std::wstring WholeSystemMessage(DWORD error, DWORD languageId) override
    {
        // With this flag the place of a buffer is for the address of the system's.
        wchar_t* buffer = nullptr;
        const DWORD length = ::FormatMessageW(
            FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
            languageId, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
        std::wstring message(length != 0 ? buffer : L"", length);
        ::LocalFree(buffer);
        return message;
    }
};

}

ServiceSlot<TextService>& TextSlot() noexcept { return SystemService<TextService, WindowsText>::Slot(); }

}
