#include "platform/system/FileTime.h"

#include <fmt/format.h>

#include <chrono>

#include "platform/text/Text.h"

namespace Vantrel {

namespace {

// Civil dates in the proleptic Gregorian calendar; file times begin on 1601-01-01.
constexpr std::chrono::sys_days kFirstDay = std::chrono::year(1601) / std::chrono::January / 1;
constexpr int kDecimals = 7;

// Removes pDigits digits from the front and gives their number.
bool TakeNumber(std::string_view& pText, size_t pDigits, int& pNumber) {
  int64_t number = 0;
  if (pText.size() < pDigits || pText.substr(0, pDigits).find_first_not_of("0123456789") != std::string_view::npos ||
      !TryParseInt64(pText.substr(0, pDigits), number))
    return false;
  pNumber = static_cast<int>(number);
  pText.remove_prefix(pDigits);
  return true;
}

bool TakeOneOf(std::string_view& pText, std::string_view pCharacters) {
  if (pText.empty() || pCharacters.find(pText.front()) == std::string_view::npos) return false;
  pText.remove_prefix(1);
  return true;
}

// Removes the decimals of a second and returns them in ticks. Finer digits are cut off.
int64_t TakeFraction(std::string_view& pText) {
  int64_t ticks = 0;
  int decimals = 0;
  for (; !pText.empty() && pText.front() >= '0' && pText.front() <= '9'; pText.remove_prefix(1)) {
    if (decimals == kDecimals) continue;
    ticks = ticks * 10 + (pText.front() - '0');
    ++decimals;
  }
  for (; decimals < kDecimals; ++decimals) ticks *= 10;
  return ticks;
}

// "Z", "+01:00", or nothing; in seconds east of Greenwich.
bool TakeOffset(std::string_view& pText, int64_t& pSeconds) {
  pSeconds = 0;
  if (pText.empty() || TakeOneOf(pText, "Z")) return true;
  const int sign = pText.front() == '-' ? -1 : 1;
  int hours = 0;
  int minutes = 0;
  if (!TakeOneOf(pText, "+-") || !TakeNumber(pText, 2, hours)) return false;
  TakeOneOf(pText, ":");
  if (!TakeNumber(pText, 2, minutes) || hours > 23 || minutes > 59) return false;
  pSeconds = sign * (hours * 3600 + minutes * 60);
  return true;
}

// "2026-11-21" or "20261121".
bool TakeDate(std::string_view& pText, std::chrono::year_month_day& pDate) {
  int year = 0;
  int month = 0;
  int day = 0;
  if (!TakeNumber(pText, 4, year)) return false;
  const bool hasDashes = TakeOneOf(pText, "-");
  if (!TakeNumber(pText, 2, month) || hasDashes != TakeOneOf(pText, "-") || !TakeNumber(pText, 2, day)) return false;
  pDate = std::chrono::year(year) / month / day;
  return pDate.ok();
}

// "14:03:59", "140359", with decimals or without, and an offset; the ticks since midnight UTC of the date.
bool TakeTime(std::string_view& pText, int64_t& pTicks) {
  int hour = 0;
  int minute = 0;
  int second = 0;
  if (!TakeNumber(pText, 2, hour)) return false;
  const bool hasColons = TakeOneOf(pText, ":");
  if (!TakeNumber(pText, 2, minute) || hasColons != TakeOneOf(pText, ":") || !TakeNumber(pText, 2, second) ||
      hour > 23 || minute > 59 || second > 60)
    return false;
  const int64_t fraction = TakeOneOf(pText, ".,") ? TakeFraction(pText) : 0;
  int64_t offset = 0;
  if (!TakeOffset(pText, offset)) return false;
  pTicks = (hour * 3600 + minute * 60 + second - offset) * TKivFileTime::kTicksPerSecond + fraction;
  return true;
}

}  // namespace

namespace {

// Writes a number with leading zeros, and returns the end.
char* WriteDigits(char* pTarget, int64_t pNumber, int pDigits) {
  for (int i = pDigits - 1; i >= 0; --i, pNumber /= 10) pTarget[i] = static_cast<char>('0' + pNumber % 10);
  return pTarget + pDigits;
}

}  // namespace

void AppendIsoUtc(std::string& pTarget, TKivFileTime pTime) {
  if (!pTime.IsSet() || pTime.fTicks < 0) return;
  const std::chrono::year_month_day date(kFirstDay + std::chrono::days(pTime.fTicks / TKivFileTime::kTicksPerDay));
  const int64_t ofDay = pTime.fTicks % TKivFileTime::kTicksPerDay;
  const int64_t seconds = ofDay / TKivFileTime::kTicksPerSecond;
  const int64_t year = static_cast<int>(date.year());
  char text[40];
  char* end = WriteDigits(text, year, year > 9999 ? 5 : 4);
  const auto add = [&](char pSeparator, int64_t pNumber, int pDigits) {
    *end++ = pSeparator;
    end = WriteDigits(end, pNumber, pDigits);
  };
  add('-', static_cast<unsigned>(date.month()), 2);
  add('-', static_cast<unsigned>(date.day()), 2);
  add('T', seconds / 3600, 2);
  add(':', seconds / 60 % 60, 2);
  add(':', seconds % 60, 2);
  if (const int64_t fraction = ofDay % TKivFileTime::kTicksPerSecond; fraction != 0) {
    add('.', fraction, kDecimals);
    while (end[-1] == '0') --end;
  }
  *end++ = 'Z';
  pTarget.append(text, end);
}

std::string FormatIsoUtc(TKivFileTime pTime) {
  std::string text;
  AppendIsoUtc(text, pTime);
  return text;
}

bool TryParseIso(std::string_view pText, TKivFileTime& pTime) {
  std::chrono::year_month_day date;
  if (!TakeDate(pText, date)) return false;
  int64_t ofDay = 0;
  if (!pText.empty() && (!TakeOneOf(pText, "T ") || !TakeTime(pText, ofDay) || !pText.empty())) return false;
  const int64_t days = (std::chrono::sys_days(date) - kFirstDay).count();
  const int64_t ticks = days * TKivFileTime::kTicksPerDay + ofDay;
  if (ticks < 0) return false;
  pTime = {ticks};
  return true;
}

bool TIsoLocalFormatter::FindOffset(TKivFileTime pTime, int64_t& pSeconds) {
  const auto number = static_cast<int32_t>(pTime.fTicks / TKivFileTime::kTicksPerDay);
  TDay& day = fDays[static_cast<size_t>(number) % fDays.size()];
  if (day.fDay != number) {
    const TKivFileTime first{number * TKivFileTime::kTicksPerDay};
    const TKivFileTime last{first.fTicks + TKivFileTime::kTicksPerDay - TKivFileTime::kTicksPerSecond};
    int64_t atFirst = 0;
    int64_t atLast = 0;
    if (!LocalOffset(first, atFirst) || !LocalOffset(last, atLast)) return LocalOffset(pTime, pSeconds);
    day = {number, atFirst == atLast ? static_cast<int32_t>(atFirst) : kChanging};
  }
  if (day.fOffset == kChanging) return LocalOffset(pTime, pSeconds);
  pSeconds = day.fOffset;
  return true;
}

void TIsoLocalFormatter::Append(std::string& pTarget, TKivFileTime pTime) {
  int64_t offset = 0;
  // Before 1970 some offsets changed and changed back within a week.
  if (pTime.fTicks < TKivFileTime::kUnixEpoch || !FindOffset(pTime, offset)) {
    pTarget += FormatIsoLocal(pTime);
    return;
  }
  const int64_t seconds = pTime.fTicks / TKivFileTime::kTicksPerSecond + offset;
  const std::chrono::year_month_day date(kFirstDay + std::chrono::days(seconds / 86'400));
  if (date.year() > std::chrono::year(9999)) {
    pTarget += FormatIsoLocal(pTime);
    return;
  }
  const auto year = static_cast<unsigned>(static_cast<int>(date.year()));
  const auto ofDay = static_cast<unsigned>(seconds % 86'400);
  const size_t begin = pTarget.size();
  pTarget += "0000-00-00 00:00:00";
  auto put = [&](size_t pAt, unsigned pNumber) {
    pTarget[begin + pAt] = static_cast<char>('0' + pNumber / 10);
    pTarget[begin + pAt + 1] = static_cast<char>('0' + pNumber % 10);
  };
  put(0, year / 100);
  put(2, year % 100);
  put(5, static_cast<unsigned>(date.month()));
  put(8, static_cast<unsigned>(date.day()));
  put(11, ofDay / 3600);
  put(14, ofDay / 60 % 60);
  put(17, ofDay % 60);
}

std::u16string CurrentDateText() {
  constexpr size_t kDateLength = 10;
  return FromUtf8(FormatIsoLocal(TKivFileTime::Now()).substr(0, kDateLength));
}

}  // namespace Vantrel
