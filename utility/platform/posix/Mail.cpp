#include "utility/platform/Mail.h"

#include "utility/platform/Paths.h"
#include "utility/platform/posix/boxes/Display.h"
#include "utility/platform/posix/mail/MailCopy.h"
#include "utility/platform/posix/mail/MailPortal.h"
#include "utility/platform/posix/mail/MailTexts.h"
#include "utility/platform/posix/mail/StartedProgram.h"
#include "utility/platform/SystemService.h"
#include "utility/platform/Text.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/replace.hpp>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

namespace utility::platform
{

namespace
{

constexpr int startMilliseconds = 5000; ///< of a mail program; who runs by then shows the mail

/// Up to a null character.
std::string_view Whole(std::string_view text) { return text.substr(0, text.find('\0')); }

std::string Utf8(std::wstring_view text) { return std::string(Whole(CodePageFromWide(65001, text))); }

/// A line break in a heading would begin another one.
std::string Heading(std::wstring_view text)
{
    std::string line = Utf8(text);
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
    std::ranges::replace_if(line, isControl, ' ');
    return line;
}

posix::MailTexts TextsOf(const Mail& mail)
{
    posix::MailTexts texts = {Heading(mail.recipient), Heading(mail.subject), Utf8(mail.note)};
    boost::algorithm::replace_all(texts.note, "\r\n", "\n");
    return texts;
}

/// xdg-email, with the program that it leaves a mail to.
struct Relay
{
    std::string path;
    bool isToThunderbird = false;
};

/// xdg-email, where it leaves mails to a program that is known to keep attachments.
std::optional<Relay> FindRelay()
{
    Relay relay = {posix::FindProgram("xdg-email")};
    const std::string query = posix::FindProgram("xdg-mime");
    // A program that the user has named to it alone may do anything.
    const char* const named = std::getenv("MAILER");
    if (relay.path.empty() || query.empty() || (named != nullptr && *named != '\0'))
        return std::nullopt;
    const std::string mailProgram = boost::algorithm::to_lower_copy(
        posix::OutputOf({query, "query", "default", "x-scheme-handler/mailto"}, startMilliseconds));
    const auto isOf = [&](const char* name) { return mailProgram.find(name) != std::string::npos; };
    relay.isToThunderbird = isOf("thunderbird") || isOf("icedove");
    if (!relay.isToThunderbird && !isOf("evolution") && !isOf("kmail") && !isOf("claws-mail"))
        return std::nullopt;
    return relay;
}

class PosixMailProgram final : public MailProgram
{
public:
    explicit PosixMailProgram(std::string thunderbird) : m_thunderbird(std::move(thunderbird)) {}

    bool Prepare() override
    {
        m_hasPortal = posix::HasMailPortal();
        m_relay = posix::HasDisplay() ? FindRelay() : std::nullopt;
        m_isPrepared = m_hasPortal || !m_thunderbird.empty() || m_relay;
        return m_isPrepared;
    }

    std::uint32_t Send(const Mail& mail) override
    {
        if (!m_isPrepared)
            return mailFailed;
        posix::MailCopy::RemoveOld();
        posix::MailCopy copy;
        const std::string name(Whole(PathFromWide(mail.attachmentName).native()));
        if (!AreWhole(mail.attachment))
            return mailAttachmentNotFound;
        std::uint32_t result = copy.Make(mail.attachment, name);
        if (result != mailSucceeded)
            return result;
        result = HandOver(TextsOf(mail), copy.Path());
        if (result == mailSucceeded)
            copy.Keep();
        return result;
    }

private:
    std::uint32_t HandOver(const posix::MailTexts& texts, const boost::filesystem::path& attachment) const
    {
        if (m_hasPortal)
        {
            if (const auto result = posix::SendByPortal(texts, attachment))
                return *result;
        }
        if (!m_thunderbird.empty())
        {
            if (const auto state = posix::StartProgram(
                    {m_thunderbird, "-compose", posix::ThunderbirdMail(texts, attachment.native())}, startMilliseconds))
                return ResultOf(*state);
        }
        if (m_relay && IsSafe(*m_relay, texts.recipient) && IsSafe(*m_relay, attachment.native()))
        {
            if (const auto state = posix::StartProgram(
                    {m_relay->path, "--utf8", "--attach", attachment.native(), posix::MailAddress(texts)},
                    startMilliseconds))
                return ResultOf(*state);
        }
        return mailFailed;
    }

    static std::uint32_t ResultOf(const posix::ProgramState& state)
    {
        return state.isRunning || state.hasSucceeded ? mailSucceeded : mailFailed;
    }

    /// Whether this arrives as it is. xdg-email has a shell print it, which takes backslashes for more than themselves,
    /// and puts it between Thunderbird's quotes without more ado, where it might begin another attachment.
    static bool IsSafe(const Relay& relay, std::string_view text)
    {
        return text.find_first_of(relay.isToThunderbird ? "\\\n\r\"'," : "\\\n\r") == std::string_view::npos;
    }

    const std::string m_thunderbird;
    std::optional<Relay> m_relay;
    bool m_hasPortal = false;
    bool m_isPrepared = false;
};

class PosixMails final : public MailService
{
public:
    std::unique_ptr<MailProgram> Load() override
    {
        std::string thunderbird = posix::HasDisplay() ? posix::FindProgram("thunderbird") : std::string();
        const bool mayRelay = posix::HasDisplay() && !posix::FindProgram("xdg-email").empty();
        if (thunderbird.empty() && !mayRelay && !posix::HasSessionBus())
            return nullptr;
        return std::make_unique<PosixMailProgram>(std::move(thunderbird));
    }
};

}

ServiceSlot<MailService>& MailsSlot() noexcept { return SystemService<MailService, PosixMails>::Slot(); }

}
