#include "utility/desktop/MessageBoxes.h"

#include "utility/framework/internal/Boxes.h"
#include "utility/platform/Locale.h"
#include "utility/platform/Text.h"

void ZeloMessageBox(const wchar_t* text, unsigned int style, unsigned int help)
{
    utility::framework::ShowBox(text, style, help);
}

void ZeloMessageBox(unsigned int textId, unsigned int style, unsigned int help)
{
    utility::framework::ShowBox(textId, style, help);
}

void ShowSystemErrorMessage(DWORD error)
{
    using namespace utility::platform;
    constexpr unsigned int information = 64;
    const LCID language = WithDefaultSublanguage(Locale().ThreadLocale());
    utility::framework::ShowBox(Text().WholeSystemMessage(error, language).c_str(), information, 0);
}
