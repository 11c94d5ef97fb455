#include "utility/platform/FloatingPoint.h"

#include "tests/support/KeepFloatingControl.h"
#include "tests/support/windows/ImportedCall.h"
#include "utility/numbers/FloatHygiene.h"

#include <gtest/gtest.h>

#include <cfloat>

extern "C" decltype(&::_clearfp) __imp__clearfp;

TEST(WindowsFloatingPointTest, PendingFlagsAreClearedAsTheSystemDoesWhileAllIsStillMasked)
{
    const support::KeepFloatingControl keep;
    static unsigned int masks = 0; // in the moment of the clearing
    const support::ImportedCall call(__imp__clearfp,
                                     [] { return masks = utility::platform::FloatingControl(0, 0) & _MCW_EM; });
    {
        const CMaskFloatingPointExceptions masked;
    }
    EXPECT_EQ(masks, static_cast<unsigned int>(_MCW_EM));
}
