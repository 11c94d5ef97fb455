// Numbers out of text: a million different fields, each ended by a comma. So many that no branch predictor learns them.

#include "bench/CommaCursor.h"
#include "bench/RealFields.h"
#include "utility/files/TextInputOutputFile.h"
#include "utility/records/DelimitedTextRecordPtr.h"
#include "utility/records/internal/RunMethods.h"

#include <benchmark/benchmark.h>
#include <fast_float/fast_float.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <istream>
#include <numeric>
#include <random>
#include <streambuf>
#include <string>
#include <unordered_set>

namespace
{

constexpr int fieldCount = 1'000'000;

class InlineCommaCursor final : public CInlineTextRecordPtr<InlineCommaCursor>
{
public:
    using CInlineTextRecordPtr::CInlineTextRecordPtr;
    bool IsTerminator(char c) override { return c == ',' || c == '\n' || c == '\0'; }
};

struct Fields
{
    std::string commas;
    std::string blanks; ///< the same with blanks in place of the commas
    long double sum = 0.0L;
    long double magnitude = 0.0L; ///< the sum of the absolute values
};

/// Different fields, as `next` makes them from a generator of random numbers.
template <class Next>
Fields MakeFields(Next next)
{
    Fields fields;
    std::mt19937 random(20'000'001);
    std::unordered_set<std::string> known;
    while (known.size() < fieldCount)
    {
        const auto [field, isNew] = known.insert(next(random));
        if (!isNew)
            continue;
        fields.commas += *field + ',';
        const long double value = std::strtold(field->c_str(), nullptr);
        fields.sum += value;
        fields.magnitude += std::fabs(value);
    }
    fields.blanks = fields.commas;
    std::replace(fields.blanks.begin(), fields.blanks.end(), ',', ' ');
    return fields;
}

std::string NextInteger(std::mt19937& random)
{
    const auto value = static_cast<std::int64_t>(random() >> (1 + random() % 20));
    return std::to_string(random() % 2 == 0 ? value : -value);
}

const Fields& Reals()
{
    static const Fields fields = MakeFields(NextReal);
    return fields;
}

const Fields& Integers()
{
    static const Fields fields = MakeFields(NextInteger);
    return fields;
}

class DelimitedCommaCursor final : public CDelimitedTextRecordPtr
{
public:
    explicit DelimitedCommaCursor(CTextInputOutputFile* file) : CDelimitedTextRecordPtr(file, ",\n") {}
};

/// By several sums, none of which waits for the others.
template <class Sum, class Value>
Sum SumOf(const Value* values, std::size_t count)
{
    std::array<Sum, 8> sums{};
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8)
    {
        for (std::size_t j = 0; j < 8; ++j)
            sums[j] += values[i + j];
    }
    for (; i < count; ++i)
        sums[0] += values[i];
    return std::accumulate(sums.begin(), sums.end(), Sum{});
}

/// The sum of all values, a run at a time.
template <class Sum, class Value>
Sum SumOfRuns(CDelimitedTextRecordPtr& cursor)
{
    std::array<Value, 1024> values;
    std::size_t count = 0;
    Sum sum = 0;
    while (!cursor.IsEndOfRecord())
    {
        bool isGood;
        if constexpr (std::is_same_v<Value, int>)
            isGood = cursor.ReadInts(values, ',', count);
        else
            isGood = cursor.ReadReals(values, ',', count);
        sum += SumOf<Sum>(values.data(), count);
        if (!isGood)
            break;
        cursor.AdvancePtr();
    }
    return sum;
}

void AddLines(CTextRecordPtr& cursor, const std::string& text, std::size_t length)
{
    for (std::size_t at = 0; at < text.size(); at += length)
        cursor.Add(text.data() + at, text.data() + std::min(at + length, text.size()) - 1);
}

template <std::size_t LineLength>
double RealsByRuns(const Fields& fields)
{
    CTextInputOutputFile file;
    CDelimitedTextRecordPtr cursor(&file, ",;");
    AddLines(cursor, fields.commas, LineLength == 0 ? fields.commas.size() : LineLength);
    return SumOfRuns<double, double>(cursor);
}

template <std::size_t LineLength>
std::int64_t IntegersByRuns(const Fields& fields)
{
    CTextInputOutputFile file;
    CDelimitedTextRecordPtr cursor(&file, ",;");
    AddLines(cursor, fields.commas, LineLength == 0 ? fields.commas.size() : LineLength);
    return SumOfRuns<std::int64_t, int>(cursor);
}

/// The work of a run by itself, without a cursor's.
template <class Sum, class Value>
Sum SumByMethod(const Fields& fields, const utility::detail::RunMethod& method)
{
    using namespace utility::detail;
    const RunEnds ends{{',', ';'}, 2};
    RunText text;
    RunFields found;
    std::array<Value, RunText::capacity> values;
    Sum sum = 0;
    for (std::size_t at = 0; at < fields.commas.size(); at += found.End(found.count - 1) + 1)
    {
        const std::size_t size = fields.commas.copy(text.text, RunText::capacity, at);
        found.Clear();
        method.find(text, size, ends, found);
        std::size_t count = 0;
        for (std::size_t read = 1; read != 0 && count != found.count; count += read)
        {
            if constexpr (std::is_same_v<Value, int>)
                read = method.readInts(text, found, count, found.count - count, &values[count]);
            else
                read = method.readReals(text, found, count, found.count - count, &values[count], nullptr);
        }
        sum += SumOf<Sum>(values.data(), count);
    }
    return sum;
}

template <class Cursor>
double RealsByCursor(const Fields& fields)
{
    CTextInputOutputFile file;
    Cursor cursor(&file);
    cursor.Add(fields.commas.data(), fields.commas.data() + fields.commas.size() - 1);
    double sum = 0.0;
    double value;
    while (!cursor.IsEndOfRecord() && cursor.ReadReal(value))
    {
        sum += value;
        cursor.AdvancePtr();
    }
    return sum;
}

template <class Cursor>
std::int64_t IntegersByCursor(const Fields& fields)
{
    CTextInputOutputFile file;
    Cursor cursor(&file);
    cursor.Add(fields.commas.data(), fields.commas.data() + fields.commas.size() - 1);
    std::int64_t sum = 0;
    int value;
    while (!cursor.IsEndOfRecord() && cursor.ReadInt(value))
    {
        sum += value;
        cursor.AdvancePtr();
    }
    return sum;
}

double RealsByStrtod(const Fields& fields)
{
    double sum = 0.0;
    for (const char* at = fields.commas.c_str(); *at != '\0'; ++at)
    {
        char* end;
        sum += std::strtod(at, &end);
        at = end;
    }
    return sum;
}

std::int64_t IntegersByStrtol(const Fields& fields)
{
    std::int64_t sum = 0;
    for (const char* at = fields.commas.c_str(); *at != '\0'; ++at)
    {
        char* end;
        sum += std::strtol(at, &end, 10);
        at = end;
    }
    return sum;
}

template <class Sum, class Value>
Sum ByFromChars(const Fields& fields)
{
    Sum sum = 0;
    Value value;
    const char* const last = fields.commas.data() + fields.commas.size();
    for (const char* at = fields.commas.data(); at != last; ++at)
    {
        const auto [end, error] = std::from_chars(at, last, value);
        if (error != std::errc())
            break;
        sum += value;
        at = end;
    }
    return sum;
}

double RealsByFastFloat(const Fields& fields)
{
    double sum = 0.0;
    double value;
    const char* const last = fields.commas.data() + fields.commas.size();
    for (const char* at = fields.commas.data(); at != last; ++at)
    {
        const auto [end, error] = fast_float::from_chars(at, last, value);
        if (error != std::errc())
            break;
        sum += value;
        at = end;
    }
    return sum;
}

/// Reads a text where it is.
class TextBuffer final : public std::streambuf
{
public:
    explicit TextBuffer(const std::string& text)
    {
        // A buffer that is only read from never writes.
        auto* const first = const_cast<char*>(text.data());
        setg(first, first, first + text.size());
    }
};

template <class Sum, class Value>
Sum ByStream(const Fields& fields)
{
    TextBuffer buffer(fields.blanks);
    std::istream stream(&buffer);
    Sum sum = 0;
    Value value;
    while (stream >> value)
        sum += value;
    return sum;
}

/// Measures a way to read all fields. A way that leaves one out, or misreads one, is an error.
template <class Read>
void MeasureAll(benchmark::State& state, const Fields& fields, const Read& read)
{
    const auto sum = read(fields);
    // Each value and each addition may be off by some units in the last place.
    if (!(std::fabs(static_cast<long double>(sum) - fields.sum) <= fields.magnitude * 1e-14L))
        return state.SkipWithError("another sum");
    for (auto _ : state)
        benchmark::DoNotOptimize(read(fields));
    state.SetItemsProcessed(state.iterations() * fieldCount);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fields.commas.size()));
}

template <auto Fields, auto Read>
void ReadAll(benchmark::State& state)
{
    MeasureAll(state, Fields(), Read);
}

BENCHMARK(ReadAll<Reals, RealsByCursor<CommaCursor>>)->Name("reals from text/Utility:virtual");
BENCHMARK(ReadAll<Reals, RealsByCursor<InlineCommaCursor>>)->Name("reals from text/Utility:inlined");
BENCHMARK(ReadAll<Reals, RealsByCursor<DelimitedCommaCursor>>)->Name("reals from text/Utility:ends in a set");
BENCHMARK(ReadAll<Reals, RealsByRuns<0>>)->Name("reals from text/Utility:runs");
BENCHMARK(ReadAll<Reals, RealsByRuns<64>>)->Name("reals from text/Utility:runs over lines of 64");
BENCHMARK(ReadAll<Reals, RealsByFastFloat>)->Name("reals from text/fast_float");
BENCHMARK(ReadAll<Reals, ByFromChars<double, double>>)->Name("reals from text/from_chars");
BENCHMARK(ReadAll<Reals, RealsByStrtod>)->Name("reals from text/strtod");
BENCHMARK(ReadAll<Reals, ByStream<double, double>>)->Name("reals from text/istream");

BENCHMARK(ReadAll<Integers, IntegersByCursor<CommaCursor>>)->Name("integers from text/Utility:virtual");
BENCHMARK(ReadAll<Integers, IntegersByCursor<InlineCommaCursor>>)->Name("integers from text/Utility:inlined");
BENCHMARK(ReadAll<Integers, IntegersByCursor<DelimitedCommaCursor>>)->Name("integers from text/Utility:ends in a set");
BENCHMARK(ReadAll<Integers, IntegersByRuns<0>>)->Name("integers from text/Utility:runs");
BENCHMARK(ReadAll<Integers, IntegersByRuns<64>>)->Name("integers from text/Utility:runs over lines of 64");
BENCHMARK(ReadAll<Integers, ByFromChars<std::int64_t, int>>)->Name("integers from text/from_chars");
BENCHMARK(ReadAll<Integers, IntegersByStrtol>)->Name("integers from text/strtol");
BENCHMARK(ReadAll<Integers, ByStream<std::int64_t, int>>)->Name("integers from text/istream");

const bool areRegistered = []
{
    for (const utility::detail::RunMethod& each : utility::detail::runMethods.All())
    {
        if (!each.isSupported() || each.find == nullptr)
            continue;
        const std::string who = std::string("/Utility:runs by ") + each.name;
        benchmark::RegisterBenchmark(("reals from text" + who).c_str(),
                                     [&each](benchmark::State& state) {
                                         MeasureAll(state, Reals(),
                                                    [&each](const Fields& fields)
                                                    { return SumByMethod<double, double>(fields, each); });
                                     });
        benchmark::RegisterBenchmark(("integers from text" + who).c_str(),
                                     [&each](benchmark::State& state)
                                     {
                                         MeasureAll(state, Integers(),
                                                    [&each](const Fields& fields)
                                                    { return SumByMethod<std::int64_t, int>(fields, each); });
                                     });
    }
    return true;
}();

}
