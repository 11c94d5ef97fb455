// The binary cursor against one that steps byte by byte. An input is the number of lines, their lengths, and operations
// of two bytes each. Every line lies in a block of its own, with the one byte behind it that a read may take.

#include "tests/support/SlowInputCursor.h"
#include "utility/records/InputRecordPtr.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace
{

void Require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "%s differs\n", what);
    std::abort();
}

void RequireSamePlace(const CInputRecordPtr& cursor, const support::SlowInputCursor& model)
{
    Require(cursor.IsEndOfRecord() == (model.Current() == nullptr), "end of record");
    if (!cursor.IsEndOfRecord())
        Require(cursor.GetCurrentByte() == static_cast<char>(*model.Current()), "current byte");
}

void RequireSameRead(CInputRecordPtr& cursor, support::SlowInputCursor& model, int count)
{
    std::array<unsigned char, 256> found{};
    std::array<unsigned char, 256> expected{};
    Require(cursor.Read(found.data(), count) == model.Read(expected.data(), count), "result of Read");
    Require(found == expected, "what was read");
}

template <class Value, class Read>
void RequireSameValue(CInputRecordPtr& cursor, support::SlowInputCursor& model, Read read)
{
    std::array<unsigned char, sizeof(Value)> expected{};
    Value value;
    std::memcpy(&value, expected.data(), sizeof value);
    Require((cursor.*read)(value) == model.Read(expected.data(), sizeof(Value)), "result of a typed read");
    Require(std::memcmp(&value, expected.data(), sizeof value) == 0, "value");
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::uint8_t* const end = data + size;
    const auto next = [&data, end]() -> std::uint8_t { return data == end ? 0 : *data++; };

    CInputRecordPtr cursor(nullptr);
    support::SlowInputCursor model;
    cursor.Reset();
    std::vector<std::unique_ptr<unsigned char[]>> blocks;
    unsigned char value = 0;
    for (int left = next() % 6; left != 0; --left)
    {
        const std::size_t length = 1U + next() % 40U;
        auto& block = blocks.emplace_back(std::make_unique<unsigned char[]>(length + 1));
        std::generate_n(block.get(), length + 1, [&value] { return value++; });
        cursor.Add(block.get(), block.get() + length);
        model.Add(block.get(), block.get() + length);
    }

    while (data != end)
    {
        const std::uint8_t operation = next();
        const std::uint8_t argument = next();
        switch (operation % 9)
        {
        case 0:
            cursor.AdvancePtr();
            model.Advance(1);
            break;
        case 1:
            cursor.AdvancePtr(argument);
            model.Advance(argument);
            break;
        case 2:
            // As an unsigned number this is beyond every record.
            cursor.AdvancePtr(-argument);
            model.Advance(-argument);
            break;
        case 3:
            RequireSameRead(cursor, model, argument);
            break;
        case 4:
            RequireSameValue<char>(cursor, model, &CInputRecordPtr::ReadChar);
            break;
        case 5:
            RequireSameValue<int>(cursor, model, &CInputRecordPtr::ReadInt);
            break;
        case 6:
            RequireSameValue<float>(cursor, model, &CInputRecordPtr::ReadFloat);
            break;
        case 7:
            RequireSameValue<double>(cursor, model, &CInputRecordPtr::ReadReal);
            break;
        default:
            cursor.Reset();
            model.Reset();
            break;
        }
        RequireSamePlace(cursor, model);
    }
    return 0;
}
