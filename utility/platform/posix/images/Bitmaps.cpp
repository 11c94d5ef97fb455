#include "utility/platform/posix/images/Bitmaps.h"

#include "utility/platform/UntilUnload.h"

namespace utility::platform::posix
{

Objects<Bitmap>& Bitmaps()
{
    static UntilUnload<Objects<Bitmap>> bitmaps;
    return *bitmaps;
}

}
