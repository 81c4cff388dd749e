// Dates as text in both directions. Private to this port.
#pragma once

#include "Quillet/platform/Text.h"
#include "Quillet/platform/posix/Locale.h"

namespace quillet::platform {

// A date counts days since 1899-12-30; the fraction is the time of day, before that day too. Valid years are
// 100 to 9999.
bool IsDateInRange(double serial);

// The short date of the locale, then the time where the date has a fraction. A date on day 0 is written as
// the time alone. E_INVALIDARG if the date is out of range.
HRESULT WriteDate(DATE date, const Locale& locale, WideString& text);

// Reads a date, a time, or a date and a time. A date is three numbers, in the order of the locale or in
// another order that makes a valid date. DISP_E_TYPEMISMATCH for anything else.
HRESULT ReadDate(WideView text, const Locale& locale, DATE& date);

}  // namespace quillet::platform
