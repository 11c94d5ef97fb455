#pragma once

#include <string>
#include <string_view>

namespace utility::platform::posix
{

/// A mail in UTF-8, with a line feed at the end of each line of its note. An empty text is left out.
struct MailTexts
{
    std::string recipient;
    std::string subject;
    std::string note;
};

/// All but unreserved characters as %XX, and those of `kept`.
std::string PercentEncoded(std::string_view text, std::string_view kept = {});

/// The argument of Thunderbird's option -compose.
std::string ThunderbirdMail(const MailTexts& texts, std::string_view attachment);

/// The address of a mail, without its attachment.
std::string MailAddress(const MailTexts& texts);

}
