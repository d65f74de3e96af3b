#pragma once

// Dates as queries write them: "2024", "2024-05", "today", "3 days", and ranges of these.

#include <string_view>
#include <vector>

#include "platform/system/FileTime.h"
#include "search/query/Operators.h"
#include "search/query/ValueExpressions.h"

namespace Vantrel::Search {

// What a date literal stands for.
struct TDateLiteral {
  // The first and the last moment: of the year, month or day, or of the range. Of an age: from that long ago until now.
  TTimespan fSpan;
  // "3 days": "<" then means a smaller age, so a later date.
  bool fIsAge = false;
};

// Reads one date or two dates joined by "-". Days, months and years are those of local time. False for anything else.
bool TryReadDate(std::u16string_view pText, TKivFileTime pNow, TDateLiteral& pDate);
// The moment of a local date and time, which is given as if it were UTC.
TKivFileTime MomentOfLocalTime(TKivFileTime pLocal);
// Whether the text is a year alone, such as "2024".
bool IsYear(std::u16string_view pText);
// Whether the text is a unit of an age, such as "days".
bool IsAgeUnit(std::u16string_view pText);

// The spans in which a date fulfils the comparison: one, or two for "not equal".
std::vector<TTimespan> SpansOf(TOperator pOperator, const TDateLiteral& pDate, TKivFileTime pNow);

}  // namespace Vantrel::Search
