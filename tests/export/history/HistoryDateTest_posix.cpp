// Dates of the history, written and read back in several time zones.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <random>

#include "export/history/HistoryDatabase.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::History;

constexpr int64_t kSecond = TKivFileTime::kTicksPerSecond;

int64_t OffsetAt(int64_t pTicks) {
  int64_t seconds = 0;
  EXPECT_TRUE(LocalOffset({pTicks}, seconds));
  return seconds * kSecond;
}

// The other time that clocks show as the same, where they were set back; else the time itself.
int64_t Twin(int64_t pTicks) {
  constexpr int64_t kDay = 24 * 3'600 * kSecond;
  for (const int64_t other : {OffsetAt(pTicks - kDay), OffsetAt(pTicks + kDay)}) {
    const int64_t twin = pTicks + OffsetAt(pTicks) - other;
    if (OffsetAt(twin) == other && twin != pTicks) return twin;
  }
  return pTicks;
}

// Rules in the environment need no table of zones on the machine: on the hour; at one minute past midnight, as
// Newfoundland had it; by half an hour, as on Lord Howe Island; far in the west and in the east.
TEST(HistoryDateZones, EveryDateComesBack) {
  for (const char* zone :
       {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "NST3:30NDT,M3.2.0/0:01,M11.1.0/0:01",
        "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", "<-11>11", "<+1245>-12:45<+1345>,M9.5.0/2:45,M4.1.0/3:45"}) {
    setenv("TZ", zone, 1);
    tzset();
    std::mt19937_64 random(6);
    for (int i = 0; i < 20'000; ++i) {
      // Whole milliseconds from 1950 to 2100.
      const TKivFileTime time{110'000'000'000'000'000 + static_cast<int64_t>(random() % 4'700'000'000'000) * 10'000};
      const int64_t found = TimeOfDayCount(DayCountOfTime(time)).fTicks;
      const int64_t expected = found == time.fTicks ? found : Twin(time.fTicks);
      ASSERT_EQ(found, expected) << zone << ", " << time.fTicks;
    }
  }
  unsetenv("TZ");
  tzset();
  for (const double none : {1e300, -1e300, std::nan("")}) EXPECT_FALSE(TimeOfDayCount(none).IsSet());
}

}  // namespace
