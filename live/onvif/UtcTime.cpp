// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/UtcTime.h"

#include "live/onvif/Scalar.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace Veskar::Live {
namespace {

/// Reads digits and marks from the front of a text. After a fault it reads zeros.
class Cursor {
public:
    explicit Cursor(std::string_view text) : rest_(text) {}

    bool takes(char mark) {
        const bool isThere = !rest_.empty() && rest_.front() == mark;
        rest_.remove_prefix(isThere ? 1 : 0);
        return isThere;
    }
    void expect(char mark) { isFaulty_ |= !takes(mark); }
    /// A number of at most `longest` digits, between two limits.
    int number(std::size_t shortest, std::size_t longest, int least, int most) {
        int value = 0;
        std::size_t count = 0;
        for (; count < longest && startsWithDigit(); ++count) {
            value = 10 * value + takeDigit();
        }
        isFaulty_ |= count < shortest || value < least || value > most;
        return isFaulty_ ? least : value;
    }
    /// Nanoseconds from the digits behind the point.
    std::int64_t fraction() {
        isFaulty_ |= !startsWithDigit();
        std::int64_t value = 0;
        for (std::int64_t weight = 100'000'000; startsWithDigit(); weight /= 10) {
            value += weight * takeDigit();
        }
        return value;
    }
    bool isAtEnd() const { return rest_.empty(); }
    bool isFaulty() const { return isFaulty_; }

private:
    bool startsWithDigit() const {
        return !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9';
    }
    int takeDigit() {
        const int digit = rest_.front() - '0';
        rest_.remove_prefix(1);
        return digit;
    }

    std::string_view rest_;
    bool isFaulty_ = false;
};

bool isLeapYear(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysIn(int year, int month) {
    constexpr std::array<int, 12> days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return days.at(static_cast<std::size_t>(month - 1)) + (month == 2 && isLeapYear(year) ? 1 : 0);
}

struct Date {
    int year;
    int month;
    int day;
};

// Days of the proleptic Gregorian calendar: H. Hinnant, "chrono-Compatible Low-Level Date
// Algorithms". Years begin in March, so that the leap day is the last one.
constexpr std::int64_t daysToEpoch = 719468;
constexpr std::int64_t daysOfEra = 146097;  // 400 years

std::int64_t daysSinceEpoch(const Date& date) {
    const std::int64_t year = date.month > 2 ? date.year : date.year - 1;
    const std::int64_t era = year / 400;
    const std::int64_t yearOfEra = year % 400;
    const std::int64_t month = (date.month + 9) % 12;
    const std::int64_t dayOfYear = (153 * month + 2) / 5 + date.day - 1;
    return era * daysOfEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear -
           daysToEpoch;
}

Date dateOf(std::int64_t days) {
    days += daysToEpoch;
    const std::int64_t era = days / daysOfEra;
    const std::int64_t day = days % daysOfEra;
    const std::int64_t yearOfEra = (day - day / 1460 + day / 36524 - day / 146096) / 365;
    const std::int64_t dayOfYear = day - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t month = (5 * dayOfYear + 2) / 153;
    const std::int64_t calendarMonth = month < 10 ? month + 3 : month - 9;
    return {static_cast<int>(yearOfEra + 400 * era + (calendarMonth <= 2 ? 1 : 0)),
            static_cast<int>(calendarMonth),
            static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1)};
}

std::chrono::hours dayOf(Cursor& text) {
    Date date{};
    date.year = text.number(4, 4, 1970, 2200);
    text.expect('-');
    date.month = text.number(1, 2, 1, 12);
    text.expect('-');
    date.day = text.number(1, 2, 1, daysIn(date.year, date.month));
    return std::chrono::hours(24 * daysSinceEpoch(date));
}

UtcTime timeOfDay(Cursor& text) {
    const std::chrono::hours hour(text.number(1, 2, 0, 23));
    text.expect(':');
    const std::chrono::minutes minute(text.number(2, 2, 0, 59));
    text.expect(':');
    const std::chrono::seconds second(text.number(2, 2, 0, 60));
    return hour + minute + second + UtcTime(text.takes('.') ? text.fraction() : 0);
}

/// What has to be subtracted from local time.
std::chrono::minutes offset(Cursor& text) {
    if (text.isAtEnd() || text.takes('Z')) {
        return std::chrono::minutes(0);
    }
    const bool isAhead = text.takes('+');
    if (!isAhead) {
        text.expect('-');
    }
    const std::chrono::hours hours(text.number(2, 2, 0, 14));
    text.expect(':');
    const std::chrono::minutes size = hours + std::chrono::minutes(text.number(2, 2, 0, 59));
    return isAhead ? size : -size;
}

}  // namespace

std::optional<UtcTime> parseUtcTime(std::string_view text) {
    Cursor cursor(trimmed(text));
    const std::chrono::hours day = dayOf(cursor);
    cursor.expect('T');
    const UtcTime time = timeOfDay(cursor);
    const UtcTime utc = day + time - offset(cursor);
    const bool isTime = !cursor.isFaulty() && cursor.isAtEnd() && utc >= UtcTime::zero();
    return isTime ? std::optional(utc) : std::nullopt;
}

std::string utcText(UtcTime time) {
    using std::chrono::duration_cast;
    const std::int64_t micros =
        std::max<std::int64_t>(duration_cast<std::chrono::microseconds>(time).count(), 0);
    constexpr std::int64_t microsPerDay = 86'400'000'000;
    const Date date = dateOf(micros / microsPerDay);
    const std::int64_t ofDay = micros % microsPerDay;
    const auto part = [ofDay](std::int64_t unit, std::int64_t limit) {
        return static_cast<int>(ofDay / unit % limit);
    };
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%06dZ", date.year,
                  date.month, date.day, part(3'600'000'000, 24), part(60'000'000, 60),
                  part(1'000'000, 60), part(1, 1'000'000));
    return text.data();
}

}  // namespace Veskar::Live
