// Locales by their identifier: created once, then found without a lock.
#include "Quillet/platform/posix/Locale.h"

#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "Quillet/platform/posix/IcuMemory.h"

namespace quillet::platform {
namespace {

constexpr LCID Neutral = 0;
constexpr LCID SystemDefault = 0x0800;
constexpr std::int32_t PatternCapacity = 128;

constexpr WideView DefaultDatePattern = u"M/d/yyyy";
constexpr WideView DefaultTimePattern = u"h:mm:ss a";
constexpr WideView InvariantDatePattern = u"MM/dd/yyyy";
constexpr WideView InvariantTimePattern = u"HH:mm:ss";

struct CloseNumberFormat {
    void operator()(UNumberFormat* format) const { unum_close(format); }
};
struct CloseDateFormat {
    void operator()(UDateFormat* format) const { udat_close(format); }
};
using NumberFormatPtr = std::unique_ptr<UNumberFormat, CloseNumberFormat>;
using DateFormatPtr = std::unique_ptr<UDateFormat, CloseDateFormat>;

// The locale that the environment names for a category, without code set and modifier; empty for "C".
std::string EnvironmentLocale(const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0') {
            continue;
        }
        std::string name(value);
        name.resize(std::min(name.find_first_of(".@"), name.size()));
        return name == "C" || name == "POSIX" ? std::string() : name;
    }
    return {};
}

bool IsUserDefault(LCID id) {
    return id == LOCALE_USER_DEFAULT || id == SystemDefault || id == Neutral;
}

// Symbols are short everywhere; one that does not fit is replaced by that of the "C" locale.
WideString Symbol(const UNumberFormat* format, UNumberFormatSymbol symbol, WideView otherwise) {
    std::array<WCHAR, 32> buffer;
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = WithMemory([&] {
        return unum_getSymbol(format, symbol, buffer.data(), static_cast<std::int32_t>(buffer.size()),
                              &status);
    });
    RequireMemory(status);
    if (U_FAILURE(status) || length <= 0 || length > static_cast<std::int32_t>(buffer.size())) {
        return WideString(otherwise);
    }
    return WideString(buffer.data(), static_cast<std::size_t>(length));
}

NumberSymbols ReadNumberSymbols(const std::string& name) {
    NumberSymbols symbols;
    if (name.empty()) {
        return symbols;
    }
    RequireMemory();
    UErrorCode status = U_ZERO_ERROR;
    const NumberFormatPtr format = WithMemory(
        [&] { return NumberFormatPtr(unum_open(UNUM_DECIMAL, nullptr, 0, name.c_str(), nullptr, &status)); });
    RequireMemory(status);
    if (U_SUCCESS(status)) {
        symbols.decimal = Symbol(format.get(), UNUM_DECIMAL_SEPARATOR_SYMBOL, u".").front();
        symbols.group = Symbol(format.get(), UNUM_GROUPING_SEPARATOR_SYMBOL, u",").front();
        symbols.currency = Symbol(format.get(), UNUM_CURRENCY_SYMBOL, symbols.currency);
    }
    return symbols;
}

// The field of a pattern letter as this port knows it; 0 for fields that a short date leaves out.
char FieldOf(WCHAR letter) {
    switch (letter) {
        case u'd':
        case u'M':
        case u'y':
        case u'H':
        case u'h':
        case u'm':
        case u's':
        case u'a':
            return static_cast<char>(letter);
        case u'L':
            return 'M';
        case u'u':
            return 'y';
        case u'k':
            return 'H';
        case u'K':
            return 'h';
        case u'b':
        case u'B':
            return 'a';
        default:
            return 0;
    }
}

bool IsPatternLetter(WCHAR unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

DatePatternItem Literal(WCHAR unit) {
    constexpr WCHAR NoBreakSpace = 0x00A0;
    constexpr WCHAR NarrowNoBreakSpace = 0x202F;
    return {0, 1, unit == NoBreakSpace || unit == NarrowNoBreakSpace ? u' ' : unit};
}

DatePatternItem Field(char field, std::size_t run) {
    constexpr int YearWidth = 4;
    if (field == 'y') {
        // A year of two digits would not read back as the same date.
        return {field, YearWidth, 0};
    }
    return {field, run == 1 ? 1 : 2, 0};
}

std::vector<DatePatternItem> CompilePattern(WideView pattern) {
    std::vector<DatePatternItem> items;
    bool quoted = false;
    for (std::size_t at = 0; at < pattern.size();) {
        const WCHAR unit = pattern[at];
        if (unit == u'\'') {
            quoted = !quoted;
            ++at;
        } else if (quoted || !IsPatternLetter(unit)) {
            items.push_back(Literal(unit));
            ++at;
        } else {
            const std::size_t end = std::min(pattern.find_first_not_of(unit, at), pattern.size());
            if (const char field = FieldOf(unit)) {
                items.push_back(Field(field, end - at));
            }
            at = end;
        }
    }
    return items;
}

DateFormatPtr OpenDates(UDateFormatStyle time, UDateFormatStyle date, const std::string& name,
                        UErrorCode& status) {
    RequireMemory();
    DateFormatPtr format = WithMemory(
        [&] { return DateFormatPtr(udat_open(time, date, name.c_str(), u"GMT", -1, nullptr, 0, &status)); });
    RequireMemory(status);
    return format;
}

WideString ReadPattern(const std::string& name, UDateFormatStyle time, UDateFormatStyle date) {
    UErrorCode status = U_ZERO_ERROR;
    const std::string gregorian = name + "@calendar=gregorian";
    const DateFormatPtr format = OpenDates(time, date, gregorian, status);
    if (U_FAILURE(status)) {
        return {};
    }
    WideString pattern(PatternCapacity, u'\0');
    const std::int32_t length = WithMemory(
        [&] { return udat_toPattern(format.get(), false, pattern.data(), PatternCapacity, &status); });
    RequireMemory(status);
    pattern.resize(U_SUCCESS(status) && length <= PatternCapacity ? static_cast<std::size_t>(length) : 0);
    return pattern;
}

WideString ReadDayHalf(const std::string& name, std::int32_t index, WideView otherwise) {
    UErrorCode status = U_ZERO_ERROR;
    const DateFormatPtr format = OpenDates(UDAT_MEDIUM, UDAT_NONE, name, status);
    std::array<WCHAR, 32> buffer;
    const std::int32_t length = U_FAILURE(status) ? 0 : WithMemory([&] {
        return udat_getSymbols(format.get(), UDAT_AM_PMS, index, buffer.data(),
                               static_cast<std::int32_t>(buffer.size()), &status);
    });
    RequireMemory(status);
    if (U_FAILURE(status) || length <= 0 || length > static_cast<std::int32_t>(buffer.size())) {
        return WideString(otherwise);
    }
    return WideString(buffer.data(), static_cast<std::size_t>(length));
}

// A time that every locale can read back: colons between hours, minutes and seconds, a blank beside the half
// of the day, and no words.
std::vector<DatePatternItem> PlainTime(const std::vector<DatePatternItem>& items) {
    std::vector<DatePatternItem> plain;
    for (const DatePatternItem& item : items) {
        if (item.field == 0) {
            continue;
        }
        if (!plain.empty()) {
            plain.push_back(Literal(item.field == 'a' || plain.back().field == 'a' ? u' ' : u':'));
        }
        plain.push_back(item);
    }
    return plain;
}

// Whether each of the fields occurs in the pattern exactly once.
bool HasFields(const std::vector<DatePatternItem>& items, std::string_view fields) {
    return std::all_of(fields.begin(), fields.end(), [&](char field) {
        return std::count_if(items.begin(), items.end(),
                             [&](const DatePatternItem& item) { return item.field == field; }) == 1;
    });
}

DateStyle ReadDateStyle(const std::string& name) {
    DateStyle style;
    style.date = CompilePattern(DefaultDatePattern);
    style.time = CompilePattern(DefaultTimePattern);
    if (name.empty()) {
        return style;
    }
    auto date = CompilePattern(ReadPattern(name, UDAT_NONE, UDAT_SHORT));
    if (HasFields(date, "dMy")) {
        style.date = std::move(date);
        std::size_t position = 0;
        for (const DatePatternItem& item : style.date) {
            if (item.field != 0 && position < style.order.size()) {
                style.order[position++] = item.field;
            }
        }
    }
    auto time = PlainTime(CompilePattern(ReadPattern(name, UDAT_MEDIUM, UDAT_NONE)));
    if (HasFields(time, "Hms") || HasFields(time, "hmsa")) {
        style.time = std::move(time);
    }
    style.am = ReadDayHalf(name, 0, style.am);
    style.pm = ReadDayHalf(name, 1, style.pm);
    return style;
}

DateStyle InvariantDateStyle() {
    DateStyle style;
    style.date = CompilePattern(InvariantDatePattern);
    style.time = CompilePattern(InvariantTimePattern);
    return style;
}

bool IsFrench(std::string_view name) {
    return name == "fr" || name.starts_with("fr_") || name.starts_with("fr-");
}

UCollator* OpenCollator(const std::string& name, UCollationStrength strength, UErrorCode& status) {
    UCollator* collator = ucol_open(name.empty() ? "root" : name.c_str(), &status);
    if (U_FAILURE(status)) {
        return nullptr;
    }
    ucol_setStrength(collator, strength);
    ucol_setAttribute(collator, UCOL_NORMALIZATION_MODE, UCOL_ON, &status);
    if (IsFrench(name)) {
        // The last accent in which two words differ decides, whatever the country.
        ucol_setAttribute(collator, UCOL_FRENCH_COLLATION, UCOL_ON, &status);
    }
    return collator;
}

}  // namespace

Locale::Locale(LCID id, Names names)
    : m_id(id), m_names(std::move(names)), m_numbers(ReadNumberSymbols(m_names.numbers)) {
}

Locale::Names Locale::NamesFor(LCID id) {
    if (IsUserDefault(id)) {
        return {EnvironmentLocale("LC_NUMERIC"), EnvironmentLocale("LC_COLLATE"),
                EnvironmentLocale("LC_TIME")};
    }
    if (id == LOCALE_INVARIANT) {
        return {};
    }
    std::array<char, ULOC_FULLNAME_CAPACITY> name;
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = WithMemory([&] {
        return uloc_getLocaleForLCID(id, name.data(), static_cast<std::int32_t>(name.size()), &status);
    });
    RequireMemory(status);
    if (U_FAILURE(status) || length <= 0 || length >= static_cast<std::int32_t>(name.size())) {
        return {};
    }
    const std::string found(name.data(), static_cast<std::size_t>(length));
    return {found, found, found};
}

const Locale& Locale::For(LCID id) {
    // Entries are only ever added in front and never leave, so readers need no lock.
    static std::atomic<const Locale*> s_first{nullptr};
    static std::mutex s_adding;

    const auto find = [id]() -> const Locale* {
        const Locale* entry = s_first.load(std::memory_order_acquire);
        while (entry != nullptr && entry->m_id != id) {
            entry = entry->m_next;
        }
        return entry;
    };
    if (const Locale* entry = find()) {
        return *entry;
    }
    const std::lock_guard<std::mutex> lock(s_adding);
    if (const Locale* entry = find()) {
        return *entry;
    }
    auto* added = new Locale(id, NamesFor(id));
    added->m_next = s_first.load(std::memory_order_relaxed);
    s_first.store(added, std::memory_order_release);
    return *added;
}

template <typename Read>
void Locale::ReadOnce(std::atomic<bool>& isRead, const Read& read) const {
    if (isRead.load(std::memory_order_acquire)) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_reading);
    if (!isRead.load(std::memory_order_relaxed)) {
        read();
        isRead.store(true, std::memory_order_release);
    }
}

const DateStyle& Locale::Dates() const {
    ReadOnce(m_hasDates, [this] {
        m_dates = m_id == LOCALE_INVARIANT ? InvariantDateStyle() : ReadDateStyle(m_names.dates);
    });
    return m_dates;
}

Locale::CollatorPtr Locale::CollatorOf(UCollationStrength strength) const {
    RequireMemory();
    UErrorCode status = U_ZERO_ERROR;
    CollatorPtr collator =
        WithMemory([&] { return CollatorPtr(OpenCollator(m_names.collation, strength, status)); });
    RequireMemory(status);
    return collator;
}

const UCollator* Locale::Collator(bool ignoreCase) const {
    ReadOnce(m_hasCollators, [this] {
        m_collator = CollatorOf(UCOL_TERTIARY);
        m_caselessCollator = CollatorOf(UCOL_SECONDARY);
    });
    return ignoreCase ? m_caselessCollator.get() : m_collator.get();
}

}  // namespace quillet::platform
