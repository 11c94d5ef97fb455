#include "utility/framework/Exception.h"

#include <gtest/gtest.h>

#include <type_traits>

TEST(ExceptionTest, KnowsNoText)
{
    CException failure;
    wchar_t text[4] = L"abc";
    unsigned int helpContext = 77;
    EXPECT_EQ(failure.GetErrorMessage(text, 4, &helpContext), 0);
    EXPECT_STREQ(text, L"");
    EXPECT_EQ(helpContext, 0u);
    EXPECT_EQ(failure.GetErrorMessage(nullptr, 0, nullptr), 0);
}

TEST(ExceptionTest, BufferOfNoCharactersIsLeftAlone)
{
    CException failure;
    wchar_t text[1] = {L'x'};
    failure.GetErrorMessage(text, 0, nullptr);
    EXPECT_EQ(text[0], L'x');
}

TEST(ExceptionTest, DeleteEndsTheDerivedObject)
{
    struct Derived : CException
    {
        explicit Derived(bool& gone) : m_gone(gone) {}
        Derived(const Derived&) = delete;
        Derived& operator=(const Derived&) = delete;
        ~Derived() override { m_gone = true; }
        bool& m_gone;
    };
    bool gone = false;
    CException* const failure = new Derived(gone);
    failure->Delete();
    EXPECT_TRUE(gone);
}

TEST(ExceptionTest, IsAnObjectOfTheFramework)
{
    static_assert(std::is_base_of_v<CObject, CException>);
    static_assert(std::has_virtual_destructor_v<CObject>);
}
