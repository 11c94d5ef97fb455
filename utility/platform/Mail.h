#pragma once

#include "utility/platform/Service.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <memory>
#include <string>

namespace utility::platform
{

/// What a mail is to have. Texts that are empty are left out; a text ends at a null character.
struct Mail
{
    std::wstring recipient; ///< without one the mail program asks
    std::wstring subject;
    std::wstring note; ///< goes with a subject only
    boost::filesystem::path attachment;
    std::wstring attachmentName; ///< what the attachment is called in the mail
    bool isWithoutDialog = false;
};

// How a mail ended, as Simple MAPI numbers it.
inline constexpr std::uint32_t mailSucceeded = 0;
inline constexpr std::uint32_t mailCancelled = 1;
inline constexpr std::uint32_t mailFailed = 2;
inline constexpr std::uint32_t mailLogonFailed = 3;
inline constexpr std::uint32_t mailAttachmentNotFound = 11;
inline constexpr std::uint32_t mailAttachmentNotOpened = 12;
inline constexpr std::uint32_t mailAttachmentNotWritten = 13;

/// The user's mail program, for one thread at a time.
class MailProgram
{
public:
    virtual ~MailProgram() = default;

    /// Finds out how mails are handed to it. False if it takes none.
    virtual bool Prepare() = 0;

    /// Hands over one mail and says how that ended; without a Prepare that succeeded it is a failure. On Windows the
    /// call lasts as long as the mail's dialog. On Linux it lasts until a mail program has taken the mail over, and
    /// there always is a dialog.
    virtual std::uint32_t Send(const Mail& mail) = 0;
};

/// Any thread may call.
class MailService
{
public:
    virtual ~MailService() = default;

    /// Null where there is no mail program.
    [[nodiscard]] virtual std::unique_ptr<MailProgram> Load() = 0;
};

ServiceSlot<MailService>& MailsSlot() noexcept;
inline MailService& Mails() noexcept { return MailsSlot().Get(); }

}
