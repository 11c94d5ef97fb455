#pragma once

#include "utility/platform/posix/mail/MailTexts.h"

#include <boost/filesystem/path.hpp>

#include <chrono>
#include <cstdint>
#include <optional>

namespace utility::platform::posix
{

// The desktop's portal for mails, org.freedesktop.portal.Email, on the session's bus. The library for the bus is
// loaded for as long as each of these takes.

/// How long is waited.
struct PortalWaits
{
    std::chrono::milliseconds answer{10'000}; ///< for each answer of the bus and of the portal
    std::chrono::milliseconds user{300'000};  ///< for the user, who may be asked which mail program it shall be
};

/// Whether the session may have a bus; nobody is asked.
bool HasSessionBus();

/// Whether the portal answers. It is started if need be.
bool HasMailPortal(const PortalWaits& waits = {});

/// Hands a mail over, and says how that ended. No value if the portal has not begun with it, among others because it
/// does not see the attachment: it would leave that out without a word.
std::optional<std::uint32_t> SendByPortal(const MailTexts& texts, const boost::filesystem::path& attachment,
                                          const PortalWaits& waits = {});

}
