#include "utility/text/ResourceString.h"

#include "tests/support/ForwardingText.h"
#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"
#include "utility/platform/Modules.h"

#include <gtest/gtest.h>

using utility::platform::ModuleService;
using utility::platform::ModulesSlot;
using utility::platform::TextService;
using utility::platform::TextSlot;

namespace
{

HINSTANCE Library()
{
    static const char here = 0;
    return utility::platform::Modules().ModuleAt(&here);
}

}

struct OwnString
{
    unsigned int id;
    const wchar_t* text;
};

class OwnStringsTest : public ::testing::TestWithParam<OwnString>
{
};

TEST_P(OwnStringsTest, IsFoundInEveryWay)
{
    EXPECT_EQ(resource_string(GetParam().id), GetParam().text);
    EXPECT_EQ(resource_string(Library(), GetParam().id), GetParam().text);
    EXPECT_STREQ(CResourceString(GetParam().id).GetString(), GetParam().text);
    EXPECT_STREQ(CResourceString(Library(), GetParam().id).GetString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Sixteen, OwnStringsTest,
    ::testing::Values(OwnString{8300, L"End of file found whilst trying to read an integer number."},
                      OwnString{8301, L"End of file found whilst trying to read a real number."},
                      OwnString{8302, L"Invalid character (%c) found whilst reading an integer number."},
                      OwnString{8303, L"Invalid character (%c) found whilst reading a real number."},
                      OwnString{8304, L"mm"}, OwnString{8305, L"inch"}, OwnString{8306, L"inches"},
                      OwnString{8307, L"mm"}, OwnString{8308, L"metre"}, OwnString{8309, L"metres"},
                      OwnString{8310, L"Please enter a number greater than %1%."},
                      OwnString{8311, L"Please enter a number less than %1%."},
                      OwnString{8312, L"Please enter a number greater than or equal to %1%."},
                      OwnString{8313, L"Please enter a number less than or equal to %1%."},
                      OwnString{8314, L"Please enter a number other than %1%."},
                      OwnString{8315, L"Please enter a number between %1% and %2%."}),
    [](const auto& string) { return std::to_string(string.param.id); });

TEST(ResourceStringTest, NumberAbsentFromEveryModuleIsEmpty)
{
    for (const unsigned int id : {0u, 8299u, 8316u, 0x10000u + 8301u, 0xFFFFFFFFu - 8300u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(resource_string(id), L"") << id;
        EXPECT_EQ(resource_string(Library(), id), L"") << id;
        EXPECT_TRUE(CResourceString(id).IsEmpty()) << id;
        EXPECT_TRUE(CResourceString(Library(), id).IsEmpty()) << id;
    }
}

TEST(ResourceStringTest, LooksInTheGivenModuleOnly)
{
    static support::FakeModule module;
    static support::FakeModule other;
    support::TableModules modules;
    modules.strings[{module.Handle(), 8304}] = L"millimetre";
    const support::Substitute<ModuleService> scope(ModulesSlot(), modules);
    EXPECT_EQ(resource_string(module.Handle(), 8304), L"millimetre");
    EXPECT_EQ(resource_string(other.Handle(), 8304), L"");
    EXPECT_EQ(resource_string(8304), L"mm");
    EXPECT_STREQ(CResourceString(module.Handle(), 8304).GetString(), L"millimetre");
}

TEST(ResourceStringTest, ModuleIsAskedOnce)
{
    support::TableModules modules;
    const support::Substitute<ModuleService> scope(ModulesSlot(), modules);
    EXPECT_EQ(resource_string(Library(), 8304), L"mm");
    EXPECT_EQ(modules.lookups, 1);
}

TEST(ResourceStringTest, EmbeddedNullIsKept)
{
    static support::FakeModule module;
    support::TableModules modules;
    modules.strings[{module.Handle(), 1}] = std::wstring(L"a\0b", 3);
    const support::Substitute<ModuleService> scope(ModulesSlot(), modules);
    EXPECT_EQ(resource_string(module.Handle(), 1), std::wstring(L"a\0b", 3));
    EXPECT_EQ(CResourceString(module.Handle(), 1).GetLength(), 3);
}

TEST(ResourceStringObjectTest, CopiesAreIndependentStrings)
{
    CResourceString source(8305);
    CResourceString copy(source);
    CResourceString assigned(8304);
    assigned = source;
    source.Empty();
    copy += L"!";
    EXPECT_EQ(copy, L"inch!");
    EXPECT_EQ(assigned, L"inch");
}

TEST(ResourceStringObjectTest, MoveIsDeliberatelyACopy)
{
    CResourceString source(8303);
    const CResourceString moved(std::move(source));
    CResourceString assigned(8304);
    assigned = std::move(source); // NOLINT(bugprone-use-after-move): what this is about
    EXPECT_EQ(source, moved.GetString());
    EXPECT_EQ(assigned, moved.GetString());
    EXPECT_FALSE(moved.IsEmpty());
}

TEST(ResourceStringObjectTest, IsAFrameworkString)
{
    CResourceString text(8305);
    text.Format(L"%d %s", 2, CResourceString(8306).GetString());
    EXPECT_EQ(text, L"2 inches");
    EXPECT_TRUE(text.LoadString(8308));
    EXPECT_EQ(text, L"metre");
}

TEST(FromUtfTest, Utf8)
{
    EXPECT_EQ(from_utf(L"\u00B0", 65001), "\xC2\xB0");
    EXPECT_EQ(from_utf(L"a\u65E5", 65001), "a\xE6\x97\xA5");
}

TEST(FromUtfTest, NamedCodePage) { EXPECT_EQ(from_utf(L"90\u00B0", 1252), "90\xB0"); }

TEST(FromUtfTest, TextNeedsNoNullAndEmbeddedNullsAreConverted)
{
    const std::wstring text(L"a\0\u00B0z", 4);
    EXPECT_EQ(from_utf(text, 65001), std::string("a\0\xC2\xB0z", 5));
    EXPECT_EQ(from_utf(text.data(), 3, 65001), std::string("a\0\xC2\xB0", 4));
}

TEST(FromUtfTest, LengthZeroMakesNoSecondCall)
{
    support::ForwardingText service;
    const support::Substitute<TextService> scope(TextSlot(), service);
    EXPECT_EQ(from_utf(L"text", 0, 65001), "");
    EXPECT_EQ(service.conversions, 1);
    EXPECT_EQ(from_utf(std::wstring(), 65001), "");
    EXPECT_EQ(service.conversions, 2);
    EXPECT_EQ(from_utf(L"text", 4, 65001), "text");
    EXPECT_EQ(service.conversions, 4);
}

TEST(FromUtfTest, LengthCountsByItsLow32Bits) { EXPECT_EQ(from_utf(L"text", 0x700000002ULL, 65001), "te"); }

TEST(FromUtfTest, FailureGivesAnEmptyStringAndReportsNothing)
{
    EXPECT_EQ(from_utf(L"text", 64999), "");
    support::ForwardingText service;
    service.conversionsFail = true;
    const support::Substitute<TextService> scope(TextSlot(), service);
    EXPECT_EQ(from_utf(L"text", 65001), "");
    EXPECT_EQ(service.conversions, 1);
}
