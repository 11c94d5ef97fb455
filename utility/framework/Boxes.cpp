#include "utility/framework/internal/Boxes.h"

#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/Boxes.h"
#include "utility/platform/Modules.h"
#include "utility/platform/Paths.h"

#include <string>

namespace utility::framework
{

void ShowBox(const wchar_t* text, UINT style, UINT helpTopic)
{
    const std::wstring program = platform::Modules().WholeFileName(CurrentModuleState().currentInstance);
    const std::wstring title = platform::WideFromPath(platform::PathFromWide(program).stem());
    platform::Boxes().Show(title.c_str(), text, style, helpTopic);
}

void ShowBox(UINT textId, UINT style, UINT helpTopic)
{
    ShowBox(std::wstring(FrameworkString(textId)).c_str(), style, helpTopic);
}

}
