#pragma once

#include "utility/platform/ProcessorMethods.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <type_traits>

namespace support
{

/// A test of a method by its name, which is not run where there is none or the processor does not have what it takes.
template <auto& methods>
class MethodTest : public testing::TestWithParam<const char*>
{
protected:
    using Method = std::remove_cvref_t<decltype(methods.Used())>;

    void SetUp() override
    {
        const auto all = methods.All();
        const auto found =
            std::ranges::find(all, std::string_view(GetParam()), [](const Method& each) { return each.name; });
        if (found == all.end())
            GTEST_SKIP() << "The build lacks a method by " << GetParam();
        if (!found->isSupported())
            GTEST_SKIP() << "The processor lacks what the method by " << GetParam() << " takes";
        m_method = &*found;
    }

    const Method* m_method = nullptr;
};

/// As it is when the library has been loaded.
template <class Method>
void ExpectFastestInUse(utility::platform::ProcessorMethods<Method>& methods)
{
    const Method& used = methods.Used();
    EXPECT_TRUE(used.isSupported());
    for (const Method& faster : methods.All().first(static_cast<std::size_t>(&used - methods.All().data())))
        EXPECT_FALSE(faster.isSupported()) << faster.name;
}

inline std::string NameOfMethod(const testing::TestParamInfo<const char*>& info)
{
    std::string name = info.param;
    std::erase(name, ' ');
    return name;
}

}
