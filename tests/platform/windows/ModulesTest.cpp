#include "utility/platform/Modules.h"

#include "tests/support/windows/ImportedCall.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

using utility::platform::Modules;
using utility::platform::SatelliteStem;

TEST(SatelliteStemTest, IsThePathWithoutItsExtension)
{
    EXPECT_EQ(SatelliteStem(L"C:\\App.d\\Utility.dll"), L"C:\\App.d\\Utility");
    EXPECT_EQ(SatelliteStem(L"C:\\App.d\\Utility"), L"C:\\App.d\\Utility");
    EXPECT_EQ(SatelliteStem(L"C:\\App\\libMilling.1.dll"), L"C:\\App\\libMilling.1");
    EXPECT_EQ(SatelliteStem(L""), L"");
}

extern "C" decltype(&::GetModuleFileNameW) __imp_GetModuleFileNameW;

TEST(WindowsModulesTest, FileNameThatIsTooLongIsCutAndNothingBehindItIsRead)
{
    // As the system does it, and as earlier ones did, which ended it with no null.
    static wchar_t last;
    for (const wchar_t each : {L'\0', L'x'})
    {
        last = each;
        const support::ImportedCall call(__imp_GetModuleFileNameW,
                                         [](HMODULE, wchar_t* buffer, DWORD size) -> DWORD
                                         {
                                             EXPECT_EQ(size, 260u);
                                             std::fill_n(buffer, size - 1, L'x');
                                             buffer[size - 1] = last;
                                             return size;
                                         });
        EXPECT_EQ(Modules().FileName(nullptr), std::wstring(259, L'x'));
    }
}

TEST(WindowsModulesTest, ModuleFindsWhatItNeedsBesideIt)
{
    auto path = boost::filesystem::system_complete(UTILITY_NEEDING_MODULE);
    const HINSTANCE module = Modules().Load(path.make_preferred().c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(Modules().Free(module));
}
