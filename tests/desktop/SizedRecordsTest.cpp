#include "utility/desktop/SizedRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace
{

/// Makes a record where all bytes have been 0xAA, and gives its bytes.
template <class Record>
class MadeOver
{
public:
    MadeOver()
    {
        std::fill_n(m_bytes, sizeof(Record), std::uint8_t{0xAA});
        m_record = new (m_bytes) Record;
    }

    Record& Get() { return *m_record; }

    /// Whether nothing is set but a field of this size at this place.
    bool OnlyHas(std::size_t place, std::size_t size) const
    {
        for (std::size_t i = 0; i < sizeof(Record); ++i)
        {
            if ((i < place || i >= place + size) && m_bytes[i] != 0xAA)
                return false;
        }
        return true;
    }

private:
    alignas(Record) std::uint8_t m_bytes[sizeof(Record)];
    Record* m_record;
};

template <class Record>
void ExpectWholeCopy()
{
    Record from;
    std::memset(static_cast<void*>(&from), 0x5C, sizeof(Record));
    Record to;
    std::memset(static_cast<void*>(&to), 0, sizeof(Record));
    to = from;
    EXPECT_EQ(std::memcmp(&to, &from, sizeof(Record)), 0);
}

}

TEST(SizedRecordTest, WindowPlacementHasItsSizeAndDeliberatelyNothingElse)
{
    MadeOver<CWindowPlacement> made;
    EXPECT_EQ(made.Get().length, 44u);
    EXPECT_TRUE(made.OnlyHas(0, 4));
    ExpectWholeCopy<CWindowPlacement>();
}

TEST(SizedRecordTest, DevModeHasItsSizeAndDeliberatelyNothingElse)
{
    MadeOver<CDevMode> made;
    EXPECT_EQ(made.Get().dmSize, 220u);
    EXPECT_TRUE(made.OnlyHas(68, 2));
    ExpectWholeCopy<CDevMode>();
}

TEST(SizedRecordTest, ShellExecuteInfoHasItsSizeAndDeliberatelyNothingElse)
{
    MadeOver<CShellExecuteInfo> made;
    EXPECT_EQ(made.Get().cbSize, 112u);
    EXPECT_TRUE(made.OnlyHas(0, 4));
    ExpectWholeCopy<CShellExecuteInfo>();
}

TEST(SizedRecordTest, RecordsHaveTheSizesOfTheSystems)
{
    EXPECT_EQ(sizeof(CWindowPlacement), 44u);
    EXPECT_EQ(sizeof(CDevMode), 220u);
    EXPECT_EQ(sizeof(CShellExecuteInfo), 112u);
    EXPECT_EQ(sizeof(CFormatEtc), 32u);
}

TEST(SizedRecordTest, FieldsAreWhereTheSystemHasThem)
{
    EXPECT_EQ(offsetof(WINDOWPLACEMENT, showCmd), 8u);
    EXPECT_EQ(offsetof(WINDOWPLACEMENT, rcNormalPosition), 28u);
    EXPECT_EQ(offsetof(DEVMODEW, dmFields), 72u);
    EXPECT_EQ(offsetof(DEVMODEW, dmColor), 92u);
    EXPECT_EQ(offsetof(DEVMODEW, dmFormName), 102u);
    EXPECT_EQ(offsetof(DEVMODEW, dmBitsPerPel), 168u);
    EXPECT_EQ(offsetof(DEVMODEW, dmPanningHeight), 216u);
    EXPECT_EQ(offsetof(SHELLEXECUTEINFOW, lpFile), 24u);
    EXPECT_EQ(offsetof(SHELLEXECUTEINFOW, nShow), 48u);
    EXPECT_EQ(offsetof(SHELLEXECUTEINFOW, hInstApp), 56u);
    EXPECT_EQ(offsetof(SHELLEXECUTEINFOW, hProcess), 104u);
    EXPECT_EQ(offsetof(FORMATETC, ptd), 8u);
    EXPECT_EQ(offsetof(FORMATETC, tymed), 24u);
}

TEST(FormatEtcTest, IsAllZerosAtFirst)
{
    alignas(CFormatEtc) std::uint8_t bytes[sizeof(CFormatEtc)];
    std::fill_n(bytes, sizeof(bytes), std::uint8_t{0xAA});
    const auto* const made = new (bytes) CFormatEtc;
    EXPECT_EQ(made->cfFormat, 0);
    EXPECT_EQ(made->ptd, nullptr);
    EXPECT_EQ(made->dwAspect, 0u);
    EXPECT_EQ(made->lindex, 0);
    EXPECT_EQ(made->tymed, 0u);
}

TEST(FormatEtcTest, ArgumentsAreItsFields)
{
    tagDVTARGETDEVICE device = {};
    const CFormatEtc made(13, &device, 4, -1, 0x80000000u);
    EXPECT_EQ(made.cfFormat, 13);
    EXPECT_EQ(made.ptd, &device);
    EXPECT_EQ(made.dwAspect, 4u);
    EXPECT_EQ(made.lindex, -1);
    EXPECT_EQ(made.tymed, 0x80000000u);
    CFormatEtc copy;
    copy = made;
    EXPECT_EQ(copy.cfFormat, 13);
    EXPECT_EQ(copy.ptd, &device);
    EXPECT_EQ(copy.dwAspect, 4u);
    EXPECT_EQ(copy.lindex, -1);
    EXPECT_EQ(copy.tymed, 0x80000000u);
}
