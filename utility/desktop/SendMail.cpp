#include "utility/desktop/SendMail.h"

#include "resources/StringIds.h"
#include "utility/files/FileNames.h"
#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/Mail.h"
#include "utility/text/ResourceString.h"

#include <boost/filesystem/operations.hpp>

#include <stdexcept>

namespace platform = utility::platform;
using boost::filesystem::path;

namespace
{

[[noreturn]] void ThrowText(unsigned int id)
{
    throw std::runtime_error(from_utf(std::wstring(utility::framework::FrameworkString(id)), 0));
}

/// A file that is gone with the end of the scope.
struct RemovedFile
{
    explicit RemovedFile(const path& name) : file(name) {}
    RemovedFile(const RemovedFile&) = delete;
    RemovedFile& operator=(const RemovedFile&) = delete;
    ~RemovedFile()
    {
        boost::system::error_code ignored;
        boost::filesystem::remove(file, ignored);
    }

    const path file;
};

}

CSendMail::CSendMail() : m_program(platform::Mails().Load()) {}

CSendMail::CSendMail(CSendMail&&) noexcept = default;
CSendMail& CSendMail::operator=(CSendMail&&) noexcept = default;
CSendMail::~CSendMail() = default;

bool CSendMail::Init()
{
    if (m_program == nullptr)
        ThrowText(utility::resources::NoMailProgram);
    if (!m_program->Prepare())
        ThrowText(utility::resources::MailProgramUnusable);
    return true;
}

bool CSendMail::Send(const std::wstring& recipient, const std::wstring& subject, const path& attachment,
                     const std::wstring& attachmentName, const std::wstring& note, bool noDialog)
{
    if (m_program == nullptr)
        return true;
    platform::Mail mail;
    mail.recipient = recipient;
    mail.subject = subject;
    // Deliberately no note without a subject.
    if (!subject.empty())
        mail.note = note;
    mail.attachment = attachment;
    mail.attachmentName = attachmentName;
    mail.isWithoutDialog = noDialog;
    switch (m_program->Send(mail))
    {
    case platform::mailSucceeded:
    case platform::mailCancelled:
    case platform::mailLogonFailed:
        return false;
    default:
        // Deliberately true for a failure.
        return true;
    }
}

bool CSendMail::Send(bool (*writer)(std::int64_t, const path&), std::int64_t context, const wchar_t* attachmentName,
                     const path& folder)
{
    const RemovedFile written(MakeTemporaryFile(folder, L"MS"));
    if (!writer(context, written.file))
        return false;
    const std::wstring none;
    Send(none, none, written.file, attachmentName != nullptr ? std::wstring(attachmentName) : none, none, false);
    return true;
}
