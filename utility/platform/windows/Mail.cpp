#include "utility/platform/Mail.h"

#include "utility/platform/FileSystem.h"
#include "utility/platform/Modules.h"
#include "utility/platform/SystemService.h"
#include "utility/platform/Text.h"
#include "utility/platform/Types.h"

#include <mapi.h>

namespace utility::platform
{

namespace
{

std::string Narrow(std::wstring_view text) { return CodePageFromWide(CP_ACP, text); }

/// Simple MAPI.
class MapiProgram final : public MailProgram
{
public:
    explicit MapiProgram(HINSTANCE library) : m_library(library) {}
    MapiProgram(const MapiProgram&) = delete;
    MapiProgram& operator=(const MapiProgram&) = delete;
    ~MapiProgram() override { Modules().Free(m_library); }

    bool Prepare() override
    {
        m_send = reinterpret_cast<LPMAPISENDMAIL>(reinterpret_cast<void*>(::GetProcAddress(m_library, "MAPISendMail")));
        return m_send != nullptr;
    }

    std::uint32_t Send(const Mail& mail) override
    {
        if (m_send == nullptr)
            return mailFailed;
        // The records point into these.
        std::string recipient = Narrow(mail.recipient);
        std::string address = Narrow(L"SMTP:" + mail.recipient);
        std::string path = Narrow(mail.attachment.native());
        std::string name = Narrow(mail.attachmentName);
        std::string subject = Narrow(mail.subject);
        std::string note = Narrow(mail.note);

        MapiFileDesc file = {};
        file.nPosition = static_cast<ULONG>(-1);
        file.lpszPathName = path.data();
        file.lpszFileName = name.data();
        MapiRecipDesc to = {};
        to.ulRecipClass = MAPI_TO;
        to.lpszName = recipient.data();
        to.lpszAddress = address.data();
        MapiMessage message = {};
        message.nFileCount = 1;
        message.lpFiles = &file;
        if (!mail.recipient.empty())
        {
            message.nRecipCount = 1;
            message.lpRecips = &to;
        }
        if (!mail.subject.empty())
        {
            message.lpszSubject = subject.data();
            message.lpszNoteText = note.data();
        }
        return m_send(0, 0, &message, MAPI_LOGON_UI | (mail.isWithoutDialog ? 0 : MAPI_DIALOG), 0);
    }

private:
    HINSTANCE m_library;
    LPMAPISENDMAIL m_send = nullptr;
};

class WindowsMails final : public MailService
{
public:
    std::unique_ptr<MailProgram> Load() override
    {
        const HINSTANCE library = Modules().Load((FileSystem().SystemFolder() / L"MAPI32.dll").c_str());
        return library != nullptr ? std::make_unique<MapiProgram>(library) : nullptr;
    }
};

}

ServiceSlot<MailService>& MailsSlot() noexcept { return SystemService<MailService, WindowsMails>::Slot(); }

}
