#include "search/query/QueryDates.h"

#include <algorithm>
#include <chrono>
#include <string>

#include "platform/text/Text.h"

namespace Vantrel::Search {

namespace {

using std::chrono::days;
using std::chrono::months;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month;
using std::chrono::year_month_day;
using std::chrono::years;

constexpr int64_t kTicksPerHour = 3'600 * TKivFileTime::kTicksPerSecond;
constexpr sys_days kFirstDay = sys_days(year(1601) / 1 / 1);
constexpr int kFirstYear = 1601, kLastYear = 9999;
constexpr size_t kMostDigits = 6;

// --- local time ------------------------------------------------------------------------------------------------------

int64_t OffsetAt(int64_t pTicks) {
  int64_t seconds = 0;
  return LocalOffset({pTicks}, seconds) ? seconds * TKivFileTime::kTicksPerSecond : 0;
}

// The moment of a local time, given in ticks as if it were UTC. The first guess at the offset may be on the wrong side
// of a change.
int64_t MomentOfLocal(int64_t pLocalTicks) {
  const int64_t guess = pLocalTicks - OffsetAt(pLocalTicks);
  return pLocalTicks - OffsetAt(guess);
}

int64_t BeginOfDay(sys_days pDay) {
  return MomentOfLocal((pDay - kFirstDay).count() * TKivFileTime::kTicksPerDay);
}

sys_days DayOf(int64_t pTicks) {
  const int64_t local = pTicks + OffsetAt(pTicks);
  int64_t day = local / TKivFileTime::kTicksPerDay;
  if (local % TKivFileTime::kTicksPerDay < 0) --day;
  return kFirstDay + days(day);
}

TTimespan DaysFromTo(sys_days pFirst, sys_days pBehindLast) {
  return {BeginOfDay(pFirst), BeginOfDay(pBehindLast) - 1};
}

// --- reading ---------------------------------------------------------------------------------------------------------

bool ReadDigits(std::u16string_view pText, int64_t& pValue) {
  return pText.size() <= kMostDigits &&
         std::all_of(pText.begin(), pText.end(), [](char16_t pUnit) { return pUnit >= u'0' && pUnit <= u'9'; }) &&
         TryParseInt64(ToUtf8(pText), pValue);
}

// "2024", "2024-05", "2024-05-01".
bool ReadCalendar(std::u16string_view pText, TTimespan& pSpan) {
  if (pText.size() != 4 && pText.size() != 7 && pText.size() != 10) return false;
  int64_t yearNumber = 0, monthNumber = 1, dayNumber = 1;
  if (!ReadDigits(pText.substr(0, 4), yearNumber) || yearNumber < kFirstYear || yearNumber > kLastYear) return false;
  const year theYear(static_cast<int>(yearNumber));
  if (pText.size() == 4) {
    pSpan = DaysFromTo(theYear / 1 / 1, (theYear + years(1)) / 1 / 1);
    return true;
  }
  if (pText[4] != u'-' || !ReadDigits(pText.substr(5, 2), monthNumber)) return false;
  const year_month theMonth = theYear / static_cast<int>(monthNumber);
  if (!theMonth.ok()) return false;
  if (pText.size() == 7) {
    pSpan = DaysFromTo(theMonth / 1, (theMonth + months(1)) / 1);
    return true;
  }
  if (pText[7] != u'-' || !ReadDigits(pText.substr(8, 2), dayNumber)) return false;
  const year_month_day theDay = theMonth / static_cast<int>(dayNumber);
  if (!theDay.ok()) return false;
  pSpan = DaysFromTo(theDay, sys_days(theDay) + days(1));
  return true;
}

// "2024-05-01T14:30:00", in local time unless "Z" or an offset stands behind it. It is a moment.
bool ReadTimeOfDay(std::u16string_view pText, TTimespan& pSpan) {
  const size_t time = pText.find_first_of(u"Tt");
  if (time != 10) return false;
  TKivFileTime moment;
  if (!TryParseIso(ToUtf8(pText), moment)) return false;
  const bool isUtc = pText.find_first_of(u"Zz+-", time) != kNone;
  const int64_t ticks = isUtc ? moment.fTicks : MomentOfLocal(moment.fTicks);
  pSpan = {ticks, ticks};
  return true;
}

enum class TAgeUnit : uint8_t { auNone, auHours, auDays, auWeeks, auMonths, auYears };

TAgeUnit AgeUnitOf(std::u16string_view pText) {
  static constexpr struct {
    std::u16string_view fName;
    TAgeUnit fUnit;
  } kUnits[] = {{u"h", TAgeUnit::auHours},      {u"hour", TAgeUnit::auHours},    {u"hours", TAgeUnit::auHours},
                {u"d", TAgeUnit::auDays},       {u"day", TAgeUnit::auDays},      {u"days", TAgeUnit::auDays},
                {u"w", TAgeUnit::auWeeks},      {u"week", TAgeUnit::auWeeks},    {u"weeks", TAgeUnit::auWeeks},
                {u"month", TAgeUnit::auMonths}, {u"months", TAgeUnit::auMonths}, {u"y", TAgeUnit::auYears},
                {u"year", TAgeUnit::auYears},   {u"years", TAgeUnit::auYears}};
  for (const auto& unit : kUnits)
    if (SameTextAscii(unit.fName, pText)) return unit.fUnit;
  return TAgeUnit::auNone;
}

// The same time of day that many months earlier, on the month's last day if it is too short.
int64_t MonthsBefore(int64_t pTicks, int64_t pMonths) {
  const int64_t local = pTicks + OffsetAt(pTicks);
  const sys_days day = DayOf(pTicks);
  const int64_t ofDay = local - (day - kFirstDay).count() * TKivFileTime::kTicksPerDay;
  const year_month_day date(day);
  const year_month month = date.year() / date.month() - months(pMonths);
  year_month_day earlier = month / date.day();
  if (!earlier.ok()) earlier = month / std::chrono::last;
  return MomentOfLocal((sys_days(earlier) - kFirstDay).count() * TKivFileTime::kTicksPerDay + ofDay);
}

// "3 days", "3days".
bool ReadAge(std::u16string_view pText, TKivFileTime pNow, TTimespan& pSpan) {
  const size_t digits = std::min(pText.find_first_not_of(u"0123456789"), pText.size());
  int64_t number = 0;
  if (digits == 0 || !ReadDigits(pText.substr(0, digits), number)) return false;
  std::u16string_view unit = pText.substr(digits);
  if (unit.starts_with(u' ')) unit.remove_prefix(1);
  const int64_t now = pNow.fTicks;
  int64_t from = 0;
  switch (AgeUnitOf(unit)) {
    case TAgeUnit::auNone:
      return false;
    case TAgeUnit::auHours:
      from = now - number * kTicksPerHour;
      break;
    case TAgeUnit::auDays:
      from = now - number * TKivFileTime::kTicksPerDay;
      break;
    case TAgeUnit::auWeeks:
      from = now - number * 7 * TKivFileTime::kTicksPerDay;
      break;
    case TAgeUnit::auMonths:
    case TAgeUnit::auYears: {
      const int64_t inMonths = AgeUnitOf(unit) == TAgeUnit::auYears ? 12 * number : number;
      constexpr int64_t kMostMonths = 12 * 400;  // back to the first date that files have
      from = inMonths > kMostMonths ? 0 : MonthsBefore(now, inMonths);
      break;
    }
  }
  // Before an age lies a moment that has a text, too.
  constexpr int64_t kFirstMoment = 2;
  pSpan = {std::max(from, kFirstMoment), now};
  return true;
}

bool ReadOne(std::u16string_view pText, TKivFileTime pNow, TDateLiteral& pDate) {
  pDate.fIsAge = false;
  const sys_days today = DayOf(pNow.fTicks);
  if (SameTextAscii(pText, u"today")) {
    pDate.fSpan = DaysFromTo(today, today + days(1));
    return true;
  }
  if (SameTextAscii(pText, u"yesterday")) {
    pDate.fSpan = DaysFromTo(today - days(1), today);
    return true;
  }
  if (ReadCalendar(pText, pDate.fSpan) || ReadTimeOfDay(pText, pDate.fSpan)) return true;
  pDate.fIsAge = ReadAge(pText, pNow, pDate.fSpan);
  return pDate.fIsAge;
}

}  // namespace

TKivFileTime MomentOfLocalTime(TKivFileTime pLocal) {
  return {MomentOfLocal(pLocal.fTicks)};
}

bool IsYear(std::u16string_view pText) {
  TTimespan span;
  return pText.size() == 4 && ReadCalendar(pText, span);
}

bool IsAgeUnit(std::u16string_view pText) {
  return AgeUnitOf(pText) != TAgeUnit::auNone;
}

bool TryReadDate(std::u16string_view pText, TKivFileTime pNow, TDateLiteral& pDate) {
  if (ReadOne(pText, pNow, pDate)) return true;
  for (size_t at = pText.find(u'-'); at != kNone; at = pText.find(u'-', at + 1)) {
    TDateLiteral first, last;
    if (!ReadOne(pText.substr(0, at), pNow, first) || !ReadOne(pText.substr(at + 1), pNow, last)) continue;
    // An age stands for its moment here: "7days-3days".
    pDate = {{first.fSpan.fFrom, last.fIsAge ? last.fSpan.fFrom : last.fSpan.fTo}, false};
    return true;
  }
  return false;
}

std::vector<TTimespan> SpansOf(TOperator pOperator, const TDateLiteral& pDate, TKivFileTime pNow) {
  const auto [from, to] = pDate.fSpan;
  const bool isAge = pDate.fIsAge;
  const TTimespan before{TTimespan::kEarliest, from - 1}, since{from, TTimespan::kLatest};
  switch (pOperator) {
    case TOperator::Smaller:
      return {isAge ? TTimespan{from + 1, TTimespan::kLatest} : before};
    case TOperator::SmallerOrEqual:
      return {isAge ? since : TTimespan{TTimespan::kEarliest, to}};
    case TOperator::Larger:
      return {isAge ? before : TTimespan{to + 1, TTimespan::kLatest}};
    case TOperator::LargerOrEqual:
      return {isAge ? TTimespan{TTimespan::kEarliest, from} : since};
    case TOperator::NotEqual:
      return {before, {(isAge ? pNow.fTicks : to) + 1, TTimespan::kLatest}};
    case TOperator::Equal:
      break;
  }
  return {pDate.fSpan};
}

// --- writing ---------------------------------------------------------------------------------------------------------

namespace {

std::u16string DayText(sys_days pDay) {
  const year_month_day date(pDay);
  std::string text = std::to_string(static_cast<int>(date.year()));
  for (const unsigned part : {static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day())})
    text += (part < 10 ? "-0" : "-") + std::to_string(part);
  return FromUtf8(text);
}

bool IsBeginOfDay(int64_t pTicks) {
  return BeginOfDay(DayOf(pTicks)) == pTicks;
}

std::u16string FirstText(int64_t pTicks) {
  return IsBeginOfDay(pTicks) ? DayText(DayOf(pTicks)) : FromUtf8(FormatIsoUtc({pTicks}));
}

std::u16string LastText(int64_t pTicks) {
  return IsBeginOfDay(pTicks + 1) ? DayText(DayOf(pTicks)) : FromUtf8(FormatIsoUtc({pTicks}));
}

}  // namespace

std::u16string_view TTimespan::OperatorText() const {
  if (fFrom == kEarliest) return IsBeginOfDay(fTo + 1) ? u"<" : u"<=";
  return fTo == kLatest ? u">=" : u"";
}

std::u16string TTimespan::ValueText() const {
  if (fFrom == kEarliest) return IsBeginOfDay(fTo + 1) ? DayText(DayOf(fTo + 1)) : LastText(fTo);
  if (fTo == kLatest) return FirstText(fFrom);
  const std::u16string first = FirstText(fFrom), last = LastText(fTo);
  return first == last ? first : first + u"-" + last;
}

}  // namespace Vantrel::Search
