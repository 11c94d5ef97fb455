#pragma once

#include <chrono>

namespace utility::detail
{

/// A moment by the calendar, in UTC. The C library's own way to this takes a lock.
template <class Duration>
struct UtcTime
{
    explicit UtcTime(std::chrono::sys_time<Duration> moment)
        : UtcTime(moment, std::chrono::floor<std::chrono::days>(moment))
    {
    }

    int year;
    unsigned month;
    unsigned day;
    std::chrono::hh_mm_ss<Duration> time;

    int Hours() const { return static_cast<int>(time.hours().count()); }
    int Minutes() const { return static_cast<int>(time.minutes().count()); }
    int Seconds() const { return static_cast<int>(time.seconds().count()); }

private:
    UtcTime(std::chrono::sys_time<Duration> moment, std::chrono::sys_days midnight)
        : UtcTime(std::chrono::year_month_day(midnight), moment - midnight)
    {
    }
    UtcTime(std::chrono::year_month_day date, Duration sinceMidnight)
        : year(static_cast<int>(date.year())),
          month(static_cast<unsigned>(date.month())),
          day(static_cast<unsigned>(date.day())),
          time(sinceMidnight)
    {
    }
};

}
