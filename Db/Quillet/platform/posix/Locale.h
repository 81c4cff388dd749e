// What conversion and comparison need to know of a locale. Private to this port.
#pragma once

#include <unicode/ucol.h>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Quillet/platform/Text.h"

namespace quillet::platform {

struct NumberSymbols {
    WCHAR decimal = u'.';
    WCHAR group = u',';
    WideString currency = u"$";
};

// One piece of a date or time pattern: a field by its letter (d, M, y, H, h, m, s, a), or a literal unit
// where the letter is 0.
struct DatePatternItem {
    char field = 0;
    int width = 1;
    WCHAR literal = 0;
};

struct DateStyle {
    std::vector<DatePatternItem> date;
    std::vector<DatePatternItem> time;
    WideString am = u"AM";
    WideString pm = u"PM";
    // The letters d, M and y in the order in which the locale writes them.
    std::array<char, 3> order = {'M', 'd', 'y'};
};

// Appends the collator's sort key of the text. False, with nothing appended, if it has none.
bool AppendSortKey(const UCollator& collator, WideView text, std::string& key);

// A locale of the cache; lives as long as the process. Safe to use from several threads. A call that reads
// the locale's data for the first time throws std::bad_alloc when it is out of memory, and can be repeated.
class Locale {
public:
    // LOCALE_USER_DEFAULT, the system's default and the neutral locale are those of the environment at the
    // first call.
    static const Locale& For(LCID id);

    Locale(const Locale&) = delete;
    Locale& operator=(const Locale&) = delete;

    const NumberSymbols& Numbers() const { return m_numbers; }
    const DateStyle& Dates() const;
    // Null where ICU has no collation data at all. It takes texts as they come, normalized or not.
    const UCollator* Collator(bool ignoreCase) const;

private:
    struct CloseCollator {
        void operator()(UCollator* collator) const { ucol_close(collator); }
    };
    using CollatorPtr = std::unique_ptr<UCollator, CloseCollator>;

    // ICU names for numbers, collation and dates; an empty name stands for the "C" locale.
    struct Names {
        std::string numbers;
        std::string collation;
        std::string dates;
    };

    Locale(LCID id, Names names);
    static Names NamesFor(LCID id);
    // Calls read unless an earlier call of it completed. Not std::call_once: out of memory, the C library
    // can't let an exception out of that.
    template <typename Read>
    void ReadOnce(std::atomic<bool>& isRead, const Read& read) const;
    // Null where ICU has no collation data.
    CollatorPtr CollatorOf(UCollationStrength strength) const;

    const LCID m_id;
    const Names m_names;
    NumberSymbols m_numbers;
    const Locale* m_next = nullptr;

    mutable std::mutex m_reading;
    mutable std::atomic<bool> m_hasDates{false};
    mutable DateStyle m_dates;
    mutable std::atomic<bool> m_hasCollators{false};
    mutable CollatorPtr m_collator;
    mutable CollatorPtr m_caselessCollator;
};

}  // namespace quillet::platform
