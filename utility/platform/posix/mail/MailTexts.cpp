#include "utility/platform/posix/mail/MailTexts.h"

#include <boost/algorithm/string/replace.hpp>

namespace utility::platform::posix
{

namespace
{

bool IsUnreserved(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           std::string_view("-._~").find(c) != std::string_view::npos;
}

}

std::string PercentEncoded(std::string_view text, std::string_view kept)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char each : text)
    {
        if (IsUnreserved(each) || kept.find(each) != std::string_view::npos)
        {
            encoded += each;
            continue;
        }
        const auto byte = static_cast<unsigned char>(each);
        encoded += '%';
        encoded += digits[byte >> 4];
        encoded += digits[byte & 15];
    }
    return encoded;
}

std::string ThunderbirdMail(const MailTexts& texts, std::string_view attachment)
{
    // A list with commas, whose texts are decoded unless they stand between quotes. There is no way to have a quote and
    // a comma between quotes. So they are encoded; an attachment is the address of a file, which stays encoded: its
    // commas would end it.
    std::string list;
    if (!texts.recipient.empty())
        list += "to=" + PercentEncoded(texts.recipient) + ',';
    if (!texts.subject.empty())
        list += "subject=" + PercentEncoded(texts.subject) + ',';
    // As plain text: else it would be read as HTML.
    if (!texts.note.empty())
        list += "body=" + PercentEncoded(texts.note) + ",format=2,";
    return list + "attachment='file://" + PercentEncoded(attachment, "/") + '\'';
}

std::string MailAddress(const MailTexts& texts)
{
    std::string address = "mailto:" + PercentEncoded(texts.recipient, "@");
    char separator = '?';
    const auto add = [&](const char* name, const std::string& encoded)
    {
        if (encoded.empty())
            return;
        address += separator;
        address += name + encoded;
        separator = '&';
    };
    add("subject=", PercentEncoded(texts.subject));
    add("body=", boost::algorithm::replace_all_copy(PercentEncoded(texts.note), "%0A", "%0D%0A"));
    return address;
}

}
