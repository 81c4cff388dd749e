// The calendar is the Gregorian one throughout; field order, separators and day halves are the locale's.
#include "Quillet/platform/posix/DateText.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "Quillet/platform/posix/NumberText.h"

namespace quillet::platform {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days DayZero{std::chrono::year{1899} / 12 / 30};
constexpr sys_days FirstDay{std::chrono::year{100} / 1 / 1};
constexpr sys_days LastDay{std::chrono::year{9999} / 12 / 31};
constexpr int SecondsPerDay = 24 * 60 * 60;

// Years of two digits lie within the hundred years that end here.
constexpr int LastTwoDigitYear = 2049;

struct Moment {
    int day = 0;
    int secondOfDay = 0;

    int Hour() const { return secondOfDay / 3600; }
};

Moment Split(double serial) {
    const double whole = std::trunc(serial);
    Moment moment{static_cast<int>(whole),
                  static_cast<int>(std::lround(std::abs(serial - whole) * SecondsPerDay))};
    if (moment.secondOfDay == SecondsPerDay) {
        moment.secondOfDay = 0;
        ++moment.day;
    }
    return moment;
}

double Join(const Moment& moment) {
    const double time = static_cast<double>(moment.secondOfDay) / SecondsPerDay;
    return moment.day < 0 ? moment.day - time : moment.day + time;
}

class DateWriter {
public:
    DateWriter(const Moment& moment, const DateStyle& style, WideString& text)
        : m_moment(moment), m_style(style), m_date(DayZero + days(moment.day)), m_text(text) {}

    void Write(const std::vector<DatePatternItem>& items) {
        for (const DatePatternItem& item : items) {
            if (item.field == 0) {
                m_text += item.literal;
            } else if (item.field == 'a') {
                m_text += m_moment.Hour() < 12 ? m_style.am : m_style.pm;
            } else {
                PutNumber(ValueOf(item.field), item.width);
            }
        }
    }

private:
    unsigned ValueOf(char field) const {
        const auto second = static_cast<unsigned>(m_moment.secondOfDay);
        switch (field) {
            case 'd':
                return static_cast<unsigned>(m_date.day());
            case 'M':
                return static_cast<unsigned>(m_date.month());
            case 'y':
                return static_cast<unsigned>(static_cast<int>(m_date.year()));
            case 'H':
                return second / 3600;
            case 'h':
                return (second / 3600 + 11) % 12 + 1;
            case 'm':
                return second / 60 % 60;
            default:
                return second % 60;
        }
    }

    void PutNumber(unsigned value, int width) {
        const std::string digits = std::to_string(value);
        for (auto length = static_cast<int>(digits.size()); length < width; ++length) {
            m_text += u'0';
        }
        m_text.append(digits.begin(), digits.end());
    }

    const Moment& m_moment;
    const DateStyle& m_style;
    const year_month_day m_date;
    WideString& m_text;
};

class DateReader {
public:
    DateReader(WideView text, const DateStyle& style) : m_text(UpToZero(text)), m_style(style) {}

    // [date] [time], at least one of them, with blanks between.
    bool Read(Moment& moment) {
        SkipBlanks();
        const bool hasDate = !StartsTime();
        if (hasDate && !ReadDay(moment.day)) {
            return false;
        }
        SkipBlanks();
        if (AtEnd()) {
            return hasDate;
        }
        return ReadTime(moment.secondOfDay) && AtEnd();
    }

private:
    bool AtEnd() const { return m_at == m_text.size(); }
    bool At(WCHAR unit) const { return !AtEnd() && m_text[m_at] == unit; }
    bool AtDigit() const { return !AtEnd() && m_text[m_at] >= u'0' && m_text[m_at] <= u'9'; }
    bool AtBlank() const { return !AtEnd() && IsBlank(m_text[m_at]); }

    void SkipBlanks() {
        while (AtBlank()) {
            ++m_at;
        }
    }

    bool Skip(WCHAR unit) {
        if (!At(unit)) {
            return false;
        }
        ++m_at;
        return true;
    }

    bool SkipWord(WideView word) {
        if (word.empty() || CompareNoCase(m_text.substr(m_at, word.size()), word) != 0) {
            return false;
        }
        m_at += word.size();
        return true;
    }

    // A time starts with a number that a colon or a day half (AM, PM) follows, or with a day half.
    bool StartsTime() {
        const std::size_t start = m_at;
        int hour = 0;
        bool pm = false;
        const bool time = ReadHalf(pm) || (ReadNumber(hour, 2) && (At(u':') || (SkipBlanks(), ReadHalf(pm))));
        m_at = start;
        return time;
    }

    bool ReadNumber(int& value, int mostDigits) {
        value = 0;
        int count = 0;
        for (; AtDigit() && count < mostDigits; ++count) {
            value = value * 10 + (m_text[m_at++] - u'0');
        }
        return count > 0 && !AtDigit();
    }

    bool IsLocaleSeparator(WCHAR unit) const {
        return std::any_of(m_style.date.begin(), m_style.date.end(), [unit](const DatePatternItem& item) {
            return item.field == 0 && item.literal == unit;
        });
    }

    bool SkipSeparator() {
        SkipBlanks();
        if (AtEnd()) {
            return false;
        }
        const WCHAR unit = m_text[m_at];
        if (unit != u'/' && unit != u'-' && !IsLocaleSeparator(unit)) {
            return false;
        }
        ++m_at;
        SkipBlanks();
        return true;
    }

    // Skips what a locale writes after the last field, with or without blanks before it.
    void SkipDateEnd() {
        for (;;) {
            const std::size_t start = m_at;
            SkipBlanks();
            if (AtEnd() || AtDigit() || !IsLocaleSeparator(m_text[m_at])) {
                m_at = start;
                return;
            }
            ++m_at;
        }
    }

    using FieldOrder = std::array<char, 3>;
    using Numbers = std::array<int, 3>;

    // Three numbers in the order of the locale, or else in the first other order that makes a date.
    bool ReadDay(int& day) {
        constexpr int MostDigits = 4;
        constexpr std::array<FieldOrder, 4> Others = {
            {{'y', 'M', 'd'}, {'M', 'd', 'y'}, {'d', 'M', 'y'}, {'y', 'd', 'M'}}};
        Numbers numbers{};
        for (std::size_t index = 0; index < numbers.size(); ++index) {
            if ((index > 0 && !SkipSeparator()) || !ReadNumber(numbers[index], MostDigits)) {
                return false;
            }
        }
        SkipDateEnd();
        return ToDay(numbers, m_style.order, day) ||
               std::any_of(Others.begin(), Others.end(),
                           [&](const FieldOrder& order) { return ToDay(numbers, order, day); });
    }

    static bool ToDay(const Numbers& numbers, const FieldOrder& order, int& day) {
        const auto valueOf = [&](char field) {
            return numbers[static_cast<std::size_t>(std::find(order.begin(), order.end(), field) -
                                                    order.begin())];
        };
        constexpr int MostMonths = 12;
        constexpr int MostDays = 31;
        if (valueOf('M') > MostMonths || valueOf('d') > MostDays) {
            return false;
        }
        const year_month_day date{std::chrono::year{FullYear(valueOf('y'))},
                                  std::chrono::month{static_cast<unsigned>(valueOf('M'))},
                                  std::chrono::day{static_cast<unsigned>(valueOf('d'))}};
        if (!date.ok()) {
            return false;
        }
        day = static_cast<int>((sys_days{date} - DayZero).count());
        return true;
    }

    static int FullYear(int year) {
        if (year >= 100) {
            return year;
        }
        const int century = LastTwoDigitYear / 100 * 100;
        return century + year <= LastTwoDigitYear ? century + year : century - 100 + year;
    }

    bool ReadHalf(bool& pm) {
        pm = SkipWord(m_style.pm) || SkipWord(u"PM");
        return pm || SkipWord(m_style.am) || SkipWord(u"AM");
    }

    bool ReadTime(int& secondOfDay) {
        bool pm = false;
        bool half = ReadHalf(pm);
        SkipBlanks();
        int hour = 0;
        int minute = 0;
        int second = 0;
        if (!ReadNumber(hour, 2)) {
            return false;
        }
        const bool hasMinutes = Skip(u':');
        if (hasMinutes && (!ReadNumber(minute, 2) || (Skip(u':') && !ReadNumber(second, 2)))) {
            return false;
        }
        SkipBlanks();
        if (!half && !AtEnd()) {
            half = ReadHalf(pm);
            SkipBlanks();
        }
        if ((!hasMinutes && !half) || minute > 59 || second > 59 || hour > 23) {
            return false;
        }
        if (half && hour <= 12) {
            hour = hour % 12 + (pm ? 12 : 0);
        }
        secondOfDay = (hour * 60 + minute) * 60 + second;
        return true;
    }

    const WideView m_text;
    const DateStyle& m_style;
    std::size_t m_at = 0;
};

}  // namespace

bool IsDateInRange(double serial) {
    constexpr auto First = static_cast<double>((FirstDay - DayZero).count());
    constexpr auto Last = static_cast<double>((LastDay - DayZero).count());
    return serial > First - 1 && serial < Last + 1;
}

HRESULT WriteDate(DATE date, const Locale& locale, WideString& text) {
    if (!IsDateInRange(date)) {
        return E_INVALIDARG;
    }
    // A fraction of a day that is only a rounding error is not a time.
    constexpr double LeastTime = 1e-12;
    const double whole = std::trunc(date);
    const bool hasDate = whole != 0;
    const bool hasTime = !hasDate || std::abs(date - whole) >= LeastTime;
    Moment moment = Split(date);
    if (DayZero + days(moment.day) > LastDay) {
        // The last half second of the last year would be rounded to a day out of range.
        moment = {moment.day - 1, SecondsPerDay - 1};
    }
    const DateStyle& style = locale.Dates();
    DateWriter writer(moment, style, text);
    if (hasDate) {
        writer.Write(style.date);
    }
    if (hasTime) {
        if (hasDate) {
            text += u' ';
        }
        writer.Write(style.time);
    }
    return S_OK;
}

HRESULT ReadDate(WideView text, const Locale& locale, DATE& date) {
    Moment moment;
    if (!DateReader(text, locale.Dates()).Read(moment)) {
        return DISP_E_TYPEMISMATCH;
    }
    date = Join(moment);
    return S_OK;
}

}  // namespace quillet::platform
