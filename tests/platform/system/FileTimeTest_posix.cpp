// Remembered offsets from UTC against the system's answer, one by one.

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#include "platform/system/FileTime.h"

namespace {

using namespace Vantrel;

constexpr int64_t kDay = 86'400;

class TTimeZone {
 public:
  explicit TTimeZone(const char* pRules) { Set(pRules); }
  ~TTimeZone() { Set(nullptr); }

 private:
  static void Set(const char* pRules) {
    pRules == nullptr ? unsetenv("TZ") : setenv("TZ", pRules, 1);
    tzset();
  }
};

// Rules in the environment need no table of zones on the machine. Changes on the hour; at one minute past midnight, as
// Newfoundland had it; by half an hour; offsets of odd minutes; none.
constexpr const char* kZones[] = {"UTC0",
                                  "CET-1CEST,M3.5.0,M10.5.0/3",
                                  "NST3:30NDT,M3.2.0/0:01,M11.1.0/0:01",
                                  "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
                                  "ODD-5:53:28SUM-6:53:28,M3.5.0/2:07:13,M10.5.0/3:07:13",
                                  ":America/St_Johns",
                                  ":Africa/Monrovia"};

// The system's own answer, one by one.
std::string Slowly(TKivFileTime pTime) {
  const time_t seconds = (pTime.fTicks - TKivFileTime::kUnixEpoch) / TKivFileTime::kTicksPerSecond;
  tm local{};
  char text[64];
  localtime_r(&seconds, &local);
  return std::string(text, strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local));
}

// The days, in seconds since 1970, in which the offset of local time changes; never empty.
std::vector<int64_t> DaysOfChange() {
  constexpr int64_t kLastDay = 25'000;  // in 2038
  std::vector<int64_t> days{0};
  for (int64_t day = 0; day < kLastDay; ++day) {
    int64_t first = 0;
    int64_t last = 0;
    LocalOffset(TKivFileTime::FromUnix(day * kDay, 0), first);
    LocalOffset(TKivFileTime::FromUnix((day + 1) * kDay, 0), last);
    if (first != last) days.push_back(day * kDay);
  }
  return days;
}

TEST(IsoLocalFormatter, RemembersNoWrongOffset) {
  for (const char* zone : kZones) {
    const TTimeZone guard(zone);
    const std::vector<int64_t> changes = DaysOfChange();
    std::mt19937_64 random(7);
    TIsoLocalFormatter formatter;
    std::string text;
    for (int i = 0; i < 200'000; ++i) {
      // Half of them evenly over a century.
      const auto seconds = i % 2 == 0 ? static_cast<int64_t>(random() % 3'155'760'000)
                                      : changes[random() % changes.size()] + static_cast<int64_t>(random() % kDay);
      const TKivFileTime time = TKivFileTime::FromUnix(seconds, static_cast<uint32_t>(random() % 1'000'000'000));
      text.clear();
      formatter.Append(text, time);
      ASSERT_EQ(text, Slowly(time)) << zone << " " << seconds;
    }
  }
}

TEST(IsoLocalFormatter, EverySecondAroundAChangeOfClocks) {
  // In 2007 Newfoundland went to summer time on 11 March at 00:01 local time, which was 03:31 UTC.
  const TTimeZone guard("NST3:30NDT,M3.2.0/0:01,M11.1.0/0:01");
  constexpr int64_t kChange = 1'173'583'860;
  TIsoLocalFormatter formatter;
  auto textOf = [&](int64_t pSeconds) {
    std::string text;
    formatter.Append(text, TKivFileTime::FromUnix(pSeconds, 0));
    return text;
  };
  for (int64_t seconds = kChange - 4000; seconds < kChange + 4000; ++seconds)
    ASSERT_EQ(textOf(seconds), Slowly(TKivFileTime::FromUnix(seconds, 0)));
  EXPECT_EQ(textOf(kChange - 1), "2007-03-11 00:00:59");
  EXPECT_EQ(textOf(kChange), "2007-03-11 01:01:00");
  EXPECT_EQ(textOf(kChange + kDay), "2007-03-12 01:01:00");
}

TEST(IsoLocalFormatter, TheEdgesOfTime) {
  const TTimeZone guard("CET-1CEST,M3.5.0,M10.5.0/3");
  TIsoLocalFormatter formatter;
  for (const TKivFileTime time :
       {TKivFileTime{}, TKivFileTime{1}, TKivFileTime::FromUnix(-1, 999'999'999), TKivFileTime::FromUnix(0, 0),
        TKivFileTime::FromUnix(-11'644'473'599, 0), TKivFileTime::FromUnix(253'402'297'199, 0),
        TKivFileTime::FromUnix(253'402'297'200, 0), TKivFileTime::FromUnix(884'541'340'800, 0)}) {
    std::string text = "x";
    formatter.Append(text, time);
    EXPECT_EQ(text, "x" + FormatIsoLocal(time));
  }
  std::string text;
  formatter.Append(text, TKivFileTime::FromUnix(253'402'297'199, 0));
  EXPECT_EQ(text, "9999-12-31 23:59:59");
}

}  // namespace
