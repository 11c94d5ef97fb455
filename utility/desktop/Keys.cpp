#include "utility/desktop/Keys.h"

#include "utility/platform/Keys.h"

bool IsKeyDown(int virtualKey) { return utility::platform::Keys().IsDown(virtualKey); }

bool IsKeyDownAsync(int virtualKey) { return utility::platform::Keys().IsDownNow(virtualKey); }

int MouseKeyToVirtualKey(int mouseKey)
{
    switch (mouseKey)
    {
    case 1:
        return 1;
    case 2:
        return 2;
    case 16:
        return 4;
    default:
        return 0;
    }
}
