#include "utility/platform/posix/text/ErrorTexts.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace utility::platform::posix
{

namespace
{

struct ErrorInWords
{
    DWORD error;
    const char* text;
};

#define UTILITY_ERROR(number, text) {number, text},
constexpr ErrorInWords english[] = {
#include "resources/errors/English.inc"
};
constexpr ErrorInWords german[] = {
#include "resources/errors/German.inc"
};
constexpr ErrorInWords spanish[] = {
#include "resources/errors/Spanish.inc"
};
constexpr ErrorInWords french[] = {
#include "resources/errors/French.inc"
};
constexpr ErrorInWords italian[] = {
#include "resources/errors/Italian.inc"
};
constexpr ErrorInWords brazilianPortuguese[] = {
#include "resources/errors/BrazilianPortuguese.inc"
};
constexpr ErrorInWords turkish[] = {
#include "resources/errors/Turkish.inc"
};
constexpr ErrorInWords japanese[] = {
#include "resources/errors/Japanese.inc"
};
constexpr ErrorInWords korean[] = {
#include "resources/errors/Korean.inc"
};
constexpr ErrorInWords chineseSimplified[] = {
#include "resources/errors/ChineseSimplified.inc"
};
constexpr ErrorInWords chineseTraditional[] = {
#include "resources/errors/ChineseTraditional.inc"
};
#undef UTILITY_ERROR

struct Language
{
    DWORD primary; ///< the low ten bits of its identifiers
    const ErrorInWords* texts;
};

/// With the same errors as English, in the same order.
template <std::size_t count>
consteval Language LanguageOf(DWORD primary, const ErrorInWords (&texts)[count])
{
    if (!std::ranges::equal(texts, english, {}, &ErrorInWords::error, &ErrorInWords::error))
        throw "an error is missing";
    return {primary, texts};
}

constexpr Language languages[] = {
    LanguageOf(0x09, english), LanguageOf(0x07, german),
    LanguageOf(0x0A, spanish), LanguageOf(0x0C, french),
    LanguageOf(0x10, italian), LanguageOf(0x16, brazilianPortuguese),
    LanguageOf(0x1F, turkish), LanguageOf(0x11, japanese),
    LanguageOf(0x12, korean),  LanguageOf(0x04, chineseSimplified),
};
constexpr Language traditionalChinese = LanguageOf(0x04, chineseTraditional);

/// Taiwan, Hong Kong, Macau.
bool IsTraditionalChinese(DWORD languageId)
{
    return languageId == 0x0404 || languageId == 0x0C04 || languageId == 0x1404;
}

const ErrorInWords* TextsIn(DWORD languageId)
{
    constexpr DWORD primaryMask = 0x3FF;
    if (IsTraditionalChinese(languageId))
        return traditionalChinese.texts;
    const auto* const found = std::ranges::find(languages, languageId & primaryMask, &Language::primary);
    return found != std::end(languages) ? found->texts : english;
}

}

const char* ErrorText(DWORD error, DWORD languageId)
{
    const auto* const found = std::ranges::find(english, error, &ErrorInWords::error);
    return found != std::end(english) ? TextsIn(languageId)[found - english].text : nullptr;
}

}
