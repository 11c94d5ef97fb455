#include "utility/platform/posix/registry/NameFold.h"

#include "utility/platform/formats/Utf8.h"

#include <algorithm>
#include <cwctype>
#include <locale.h>

namespace utility::platform::posix
{

namespace
{

wchar_t UpperCase(wchar_t character)
{
    static const locale_t everyScript = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (character > 0xFFFF || everyScript == nullptr)
        return character;
    const std::wint_t upper = ::towupper_l(static_cast<std::wint_t>(character), everyScript);
    // To the registry only the two forms of a letter that lead to each other are one: not a final sigma, a title case,
    // a long s or the micro sign.
    const auto lower = static_cast<wchar_t>(::towlower_l(upper, everyScript));
    return lower == character ? static_cast<wchar_t>(upper) : character;
}

}

std::string Folded(std::wstring_view name)
{
    std::string text;
    AppendFolded(text, name);
    return text;
}

void AppendFolded(std::string& text, std::wstring_view name)
{
    if (std::ranges::all_of(name, [](wchar_t each) { return each >= 0 && each < 0x80; }))
    {
        for (const wchar_t each : name)
            text += static_cast<char>(each >= L'a' && each <= L'z' ? each - L'a' + L'A' : each);
        return;
    }
    std::wstring upper(name);
    std::ranges::transform(upper, upper.begin(),
                           [](wchar_t each)
                           { return each >= L'a' && each <= L'z' ? each - L'a' + L'A' : UpperCase(each); });
    text += formats::Utf8FromWide(upper, formats::Malformed::kept);
}

}
