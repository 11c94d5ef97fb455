// Log messages into a store of the last 500, and one that the level keeps out. Every logger has its level set and tests it
// in both cases; the streams stand for what is written by hand. Where there are several threads the time is that of the
// clock.
//
// What the others leave out or do more: spdlog's messages are narrow, and its sink formats nothing but the message
// itself until it is read; Boost.Log's are wide like the library's. The _mt sink locks as the library's store does, _st
// does not.

#include "bench/AllocationCount.h"
#include "utility/logging/LogMessages.h"
#include "utility/logging/LogStream.h"

#include <benchmark/benchmark.h>
#include <boost/circular_buffer.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/sources/severity_logger.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <spdlog/logger.h>
#include <spdlog/sinks/ringbuffer_sink.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace
{

constexpr std::size_t capacity = 500;

/// What the store of a logger must hold at the end, after messages with the numbers up to `last`.
template <class String>
bool IsLastMessage(const String& text, int last)
{
    const std::string expected = "Feed rate too high in line " + std::to_string(last);
    return text == String(expected.begin(), expected.end());
}

/// Measures `write(n)`, and shows how often it allocates.
template <class Write>
int WriteAll(benchmark::State& state, Write write)
{
    int number = 1'000'000;
    // Its first messages fill the store.
    for (std::size_t i = 0; i < 2 * capacity; ++i)
        write(++number);
    const std::uint64_t before = AllocationCount();
    for (auto _ : state)
        write(++number);
    const auto allocations = static_cast<double>(AllocationCount() - before);
    state.counters["allocations"] = allocations / static_cast<double>(state.iterations());
    return number;
}

class UtilityLog
{
public:
    UtilityLog() { SetLogLevel(LogSeverityWarning); }
    UtilityLog(const UtilityLog&) = delete;
    UtilityLog& operator=(const UtilityLog&) = delete;
    ~UtilityLog() { SetLogLevel(LogSeverityInformation); }

    void Accepted(int number) { LogFile(LogSeverityWarning, this) << L"Feed rate too high in line " << number; }
    void Between(int number)
    {
        LogFile(LogSeverityWarning, this) << L"Tool " << number << L" is worn and has to be changed";
    }
    void Real(double value) { LogFile(LogSeverityWarning, this) << L"Feed rate too high by " << value; }
    void FilteredOut(int number) { LogFile(LogSeverityInformation, this) << L"Feed rate too high in line " << number; }

    bool Holds(std::size_t count, int last)
    {
        boost::circular_buffer_space_optimized<CLogMessage> messages;
        CLogMessages::instance(this).pop(messages);
        if (messages.size() != count)
            return false;
        if (count == 0)
            return true;
        std::wstring text = messages.back().m_strMessage;
        text.pop_back(); // the line feed
        return IsLastMessage(text, last);
    }
};

template <class Sink>
class SpdLog
{
public:
    SpdLog() { m_logger.set_level(spdlog::level::warn); }

    void Accepted(int number) { m_logger.warn("Feed rate too high in line {}", number); }
    void Between(int number) { m_logger.warn("Tool {} is worn and has to be changed", number); }
    void Real(double value) { m_logger.warn("Feed rate too high by {}", value); }
    void FilteredOut(int number) { m_logger.info("Feed rate too high in line {}", number); }

    bool Holds(std::size_t count, int last)
    {
        const auto messages = m_sink->last_raw();
        if (messages.size() != count)
            return false;
        return count == 0 ||
               IsLastMessage(std::string(messages.back().payload.data(), messages.back().payload.size()), last);
    }

private:
    std::shared_ptr<Sink> m_sink = std::make_shared<Sink>(capacity);
    spdlog::logger m_logger{"bench", m_sink};
};

/// Boost.Log has no sink of its own that keeps the last messages in memory.
class BoostRing : public boost::log::sinks::basic_formatted_sink_backend<wchar_t>
{
public:
    void consume(const boost::log::record_view&, const string_type& message) { messages.push_back(message); }

    boost::circular_buffer<std::wstring> messages{capacity};
};

class BoostLog
{
public:
    BoostLog()
    {
        namespace expressions = boost::log::expressions;
        m_sink->set_formatter(expressions::stream << expressions::wmessage);
        boost::log::core::get()->set_filter(expressions::attr<int>("Severity") >= int{LogSeverityWarning});
        boost::log::core::get()->add_sink(m_sink);
    }
    BoostLog(const BoostLog&) = delete;
    BoostLog& operator=(const BoostLog&) = delete;
    ~BoostLog()
    {
        boost::log::core::get()->remove_sink(m_sink);
        boost::log::core::get()->reset_filter();
    }

    void Accepted(int number) { Write(LogSeverityWarning, number); }
    void FilteredOut(int number) { Write(LogSeverityInformation, number); }

    bool Holds(std::size_t count, int last)
    {
        const auto& messages = m_sink->locked_backend()->messages;
        return messages.size() == count && (count == 0 || IsLastMessage(messages.back(), last));
    }

private:
    void Write(int severity, int number)
    {
        BOOST_LOG_SEV(m_logger, severity) << L"Feed rate too high in line " << number;
    }

    using Sink = boost::log::sinks::synchronous_sink<BoostRing>;
    boost::shared_ptr<Sink> m_sink = boost::make_shared<Sink>();
    boost::log::sources::wseverity_logger_mt<int> m_logger;
};

template <class Log>
void Accepted(benchmark::State& state)
{
    Log log;
    const int last = WriteAll(state, [&log](int number) { log.Accepted(number); });
    if (!log.Holds(capacity, last))
        state.SkipWithError("other messages");
}

/// A number between two texts, and one of another kind behind a text.
template <class Log>
void BetweenTexts(benchmark::State& state)
{
    Log log;
    WriteAll(state, [&log](int number) { log.Between(number); });
}

template <class Log>
void Reals(benchmark::State& state)
{
    Log log;
    WriteAll(state, [&log](int number) { log.Real(number * 0.037); });
}

/// Two threads, each by a log of its own or both by one. From when the first of them begins until the last is done: both
/// begin at once, while the thread that waits for them sleeps, as it may be given a processor late.
template <class Log, bool isShared>
void OnTwoThreads(benchmark::State& state)
{
    using Clock = std::chrono::steady_clock;
    constexpr int threadCount = 2;
    constexpr int messages = 10'000;
    Log logs[threadCount];
    for (auto _ : state)
    {
        std::atomic<int> ready = 0;
        Clock::time_point begin[threadCount];
        Clock::time_point end[threadCount];
        {
            std::vector<std::jthread> threads;
            for (int i = 0; i < threadCount; ++i)
            {
                threads.emplace_back(
                    [&ready, &begin = begin[i], &end = end[i], &log = logs[isShared ? 0 : i]]
                    {
                        for (++ready; ready != threadCount;)
                            continue;
                        begin = Clock::now();
                        for (int number = 0; number < messages; ++number)
                            log.Accepted(number);
                        end = Clock::now();
                    });
            }
        }
        const std::chrono::duration<double> taken = std::ranges::max(end) - std::ranges::min(begin);
        state.SetIterationTime(taken.count());
    }
    state.SetItemsProcessed(state.iterations() * threadCount * messages);
    if (!logs[0].Holds(capacity, messages - 1))
        state.SkipWithError("other messages");
}

template <class Log>
void FilteredOut(benchmark::State& state)
{
    Log log;
    const int last = WriteAll(state, [&log](int number) { log.FilteredOut(number); });
    if (!log.Holds(0, last))
        state.SkipWithError("messages below the level");
}

void FilteredOutByUtility(benchmark::State& state)
{
    FilteredOut<UtilityLog>(state);
    if (state.counters["allocations"] != 0.0)
        state.SkipWithError("a message below the level allocates");
}

void AcceptedByStream(benchmark::State& state)
{
    std::wstring text;
    const int last = WriteAll(state,
                              [&text](int number)
                              {
                                  std::wostringstream stream;
                                  stream << L"Feed rate too high in line " << number;
                                  text = stream.str();
                                  benchmark::DoNotOptimize(text.data());
                              });
    if (!IsLastMessage(text, last))
        state.SkipWithError("another text");
}

void FilteredOutByStream(benchmark::State& state)
{
    WriteAll(state,
             [](int)
             {
                 std::wostringstream stream;
                 benchmark::DoNotOptimize(&stream);
             });
}

using SpdLogMt = SpdLog<spdlog::sinks::ringbuffer_sink_mt>;

BENCHMARK(Accepted<UtilityLog>)->Name("log message/Utility");
BENCHMARK(Accepted<SpdLogMt>)->Name("log message/spdlog ring _mt");
BENCHMARK(Accepted<SpdLog<spdlog::sinks::ringbuffer_sink_st>>)->Name("log message/spdlog ring _st");
BENCHMARK(Accepted<BoostLog>)->Name("log message/Boost.Log");
BENCHMARK(AcceptedByStream)->Name("log message/wostringstream");

BENCHMARK(BetweenTexts<UtilityLog>)->Name("log message, number between texts/Utility");
BENCHMARK(BetweenTexts<SpdLogMt>)->Name("log message, number between texts/spdlog ring _mt");
BENCHMARK(Reals<UtilityLog>)->Name("log message, double/Utility");
BENCHMARK(Reals<SpdLogMt>)->Name("log message, double/spdlog ring _mt");

BENCHMARK(OnTwoThreads<UtilityLog, true>)->Name("log message, two threads, one owner/Utility")->UseManualTime();
BENCHMARK(OnTwoThreads<SpdLogMt, true>)->Name("log message, two threads, one owner/spdlog ring _mt")->UseManualTime();
BENCHMARK(OnTwoThreads<UtilityLog, false>)->Name("log message, two threads, an owner each/Utility")->UseManualTime();
BENCHMARK(OnTwoThreads<SpdLogMt, false>)
    ->Name("log message, two threads, an owner each/spdlog ring _mt")
    ->UseManualTime();

BENCHMARK(FilteredOutByUtility)->Name("log message below the level/Utility");
BENCHMARK(FilteredOut<SpdLogMt>)->Name("log message below the level/spdlog");
BENCHMARK(FilteredOut<BoostLog>)->Name("log message below the level/Boost.Log");
BENCHMARK(FilteredOutByStream)->Name("log message below the level/wostringstream");

}
