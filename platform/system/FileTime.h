#pragma once

// Points in time: TKivFileTime, its formats and its parser.

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace Vantrel {

// A point in time as file systems of Windows store it: 100-nanosecond ticks since 1601-01-01 UTC. Zero means "no date".
struct TKivFileTime {
  int64_t fTicks = 0;

  static constexpr int64_t kTicksPerSecond = 10'000'000;
  static constexpr int64_t kTicksPerDay = 86'400 * kTicksPerSecond;
  static constexpr int64_t kUnixEpoch = 116'444'736'000'000'000;  // 1970-01-01 in ticks

  constexpr bool IsSet() const { return fTicks != 0; }
  constexpr auto operator<=>(const TKivFileTime&) const = default;

  // From a POSIX time; nanoseconds are cut to whole ticks. Times before 1601 and after the year 30000 become "no date".
  static constexpr TKivFileTime FromUnix(int64_t pSeconds, uint32_t pNanoseconds) {
    if (pSeconds <= -11'644'473'600 || pSeconds > 884'541'340'800) return {};
    return {kUnixEpoch + pSeconds * kTicksPerSecond + pNanoseconds / 100};
  }
  static TKivFileTime Now();
};

// Local date and time in the user's locale: the short date format; the long time format.
std::string FormatShortDate(TKivFileTime pTime);
std::string FormatLongTime(TKivFileTime pTime);
// "2026-11-21 14:03:59" in local time, for tables. It sorts as text and has a fixed width. Empty for "no date".
std::string FormatIsoLocal(TKivFileTime pTime);
// The offset of local time from UTC at that time, in seconds. False where FormatIsoLocal has no text.
bool LocalOffset(TKivFileTime pTime, int64_t& pSeconds);
// FormatIsoLocal for millions of times. Most of its time goes into asking the system for the offset from UTC, so this
// class remembers offsets. One thread.
class TIsoLocalFormatter {
 public:
  void Append(std::string& pTarget, TKivFileTime pTime);

 private:
  // A day whose first and last second have the same offset. All seconds between them have it too: no zone has changed
  // its offset and changed it back within a week. Most zones change on the hour, but not all.
  struct TDay {
    int32_t fDay = -1;    // since 1601
    int32_t fOffset = 0;  // seconds; kChanging where it changes during the day
  };
  static constexpr int32_t kChanging = INT32_MIN;
  bool FindOffset(TKivFileTime pTime, int64_t& pSeconds);

  std::array<TDay, 4096> fDays;  // indexed by the day's low bits: eleven years
};
// "2026-11-21T14:03:59Z" in UTC, for files. The second has as many decimals as needed, up to seven. Empty for "no
// date".
std::string FormatIsoUtc(TKivFileTime pTime);
// The same for millions of times: appends the text and allocates nothing for it.
void AppendIsoUtc(std::string& pTarget, TKivFileTime pTime);
// Reads the format of FormatIsoUtc. An offset ("+01:00") is accepted; without one the time is UTC. A blank may replace
// the "T". Dashes and colons may be missing ("20261121T140359Z"). A missing time means midnight. False for anything
// else.
bool TryParseIso(std::string_view pText, TKivFileTime& pTime);
// Today's local date: "2026-11-21".
std::u16string CurrentDateText();

}  // namespace Vantrel
