#include "utility/platform/Mail.h"

#include "utility/platform/Paths.h"
#include "utility/platform/posix/display/Display.h"
#include "utility/platform/posix/mail/MailCopy.h"
#include "utility/platform/posix/mail/MailPortal.h"
#include "utility/platform/posix/mail/MailTexts.h"
#include "utility/platform/posix/programs/RunProgram.h"
#include "utility/platform/SystemService.h"
#include "utility/platform/Text.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/replace.hpp>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

namespace utility::platform
{

namespace
{

constexpr DWORD startMilliseconds = 5000; ///< of a mail program; who runs by then shows the mail

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

bool IsInstalled(const char* program) { return !posix::InstalledProgram(program).empty(); }

/// The program that xdg-email leaves a mail to.
enum class Relay
{
    thunderbird,
    another
};

/// xdg-email, where it leaves mails to a program that is known to keep attachments.
std::optional<Relay> FindRelay()
{
    // A program that the user has named to it alone may do anything.
    const char* const named = std::getenv("MAILER");
    if (!IsInstalled("xdg-email") || (named != nullptr && *named != '\0'))
        return std::nullopt;
    const auto asked = posix::RunProgram({"xdg-mime", "query", "default", "x-scheme-handler/mailto"},
                                         {.milliseconds = startMilliseconds, .keepsOutput = true});
    if (!asked || asked->exitCode != 0)
        return std::nullopt;
    const std::string mailProgram = boost::algorithm::to_lower_copy(asked->output);
    const auto isOf = [&](const char* name) { return mailProgram.find(name) != std::string::npos; };
    if (isOf("thunderbird") || isOf("icedove"))
        return Relay::thunderbird;
    if (isOf("evolution") || isOf("kmail") || isOf("claws-mail"))
        return Relay::another;
    return std::nullopt;
}

class PosixMailProgram final : public MailProgram
{
public:
    explicit PosixMailProgram(bool hasThunderbird) : m_hasThunderbird(hasThunderbird) {}

    bool Prepare() override
    {
        m_hasPortal = posix::HasMailPortal();
        m_relay = posix::HasDisplay() ? FindRelay() : std::nullopt;
        m_isPrepared = m_hasPortal || m_hasThunderbird || m_relay;
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
        if (m_hasThunderbird)
        {
            if (const auto result =
                    Start({"thunderbird", "-compose", posix::ThunderbirdMail(texts, attachment.native())}))
                return *result;
        }
        if (m_relay && IsSafe(*m_relay, texts.recipient) && IsSafe(*m_relay, attachment.native()))
        {
            if (const auto result =
                    Start({"xdg-email", "--utf8", "--attach", attachment.native(), posix::MailAddress(texts)}))
                return *result;
        }
        return mailFailed;
    }

    /// No value if there is no such program.
    static std::optional<std::uint32_t> Start(const std::vector<std::string>& arguments)
    {
        const auto run = posix::RunProgram(arguments, {.milliseconds = startMilliseconds, .runsOn = true});
        if (!run)
            return std::nullopt;
        return run->exitCode.value_or(0) == 0 ? mailSucceeded : mailFailed;
    }

    /// Whether this arrives as it is. xdg-email has a shell print it, which takes backslashes for more than themselves,
    /// and puts it between Thunderbird's quotes without more ado, where it might begin another attachment.
    static bool IsSafe(Relay relay, std::string_view text)
    {
        return text.find_first_of(relay == Relay::thunderbird ? "\\\n\r\"'," : "\\\n\r") == std::string_view::npos;
    }

    const bool m_hasThunderbird;
    std::optional<Relay> m_relay;
    bool m_hasPortal = false;
    bool m_isPrepared = false;
};

class PosixMails final : public MailService
{
public:
    std::unique_ptr<MailProgram> Load() override
    {
        const bool hasDisplay = posix::HasDisplay();
        const bool hasThunderbird = hasDisplay && IsInstalled("thunderbird");
        const bool mayRelay = hasDisplay && IsInstalled("xdg-email");
        if (!hasThunderbird && !mayRelay && !posix::HasSessionBus())
            return nullptr;
        return std::make_unique<PosixMailProgram>(hasThunderbird);
    }
};

}

ServiceSlot<MailService>& MailsSlot() noexcept { return SystemService<MailService, PosixMails>::Slot(); }

}
