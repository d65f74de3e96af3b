#include "presentation/charts/ChartAxis.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "platform/text/Text.h"

namespace Vantrel::Charts {

namespace {

// A step of 1, 2 or 5 times a power of ten.
struct TStep {
  int fMantissa = 1;
  int fExponent = 0;
  double Value() const { return fMantissa * std::pow(10.0, fExponent); }
  TStep Next() const {
    if (fMantissa == 1) return {2, fExponent};
    if (fMantissa == 2) return {5, fExponent};
    return {1, fExponent + 1};
  }
};

// The smallest step that covers the values with so many steps.
TStep StepFor(double pLeast, double pMost, int pMostSteps, bool pWholeOnly) {
  TStep step{1, static_cast<int>(std::floor(std::log10((pMost - pLeast) / pMostSteps)))};
  if (pWholeOnly && step.fExponent < 0) step = {};
  auto covers = [&] { return std::ceil(pMost / step.Value()) - std::floor(pLeast / step.Value()) <= pMostSteps; };
  while (!covers()) step = step.Next();
  return step;
}

// The product of a whole number and a step, exactly: 3 steps of 0.1 are 0.3.
std::u16string NumberText(double pSteps, const TStep& pStep, const TValueFormat& pFormat) {
  const int decimals = std::max(0, -pStep.fExponent);
  // A product of a whole number and a negative power of ten is off by rounding, but not in these decimals.
  const std::string digits = fmt::format("{:.{}f}", pSteps * pStep.Value(), decimals);
  const size_t whole = std::min(digits.find('.'), digits.size());
  const size_t sign = digits.starts_with('-') ? 1 : 0;
  std::u16string text;
  for (size_t i = 0; i < whole; ++i) {
    if (i > sign && (whole - i) % 3 == 0) text += pFormat.fThousandsSeparator;
    text += static_cast<char16_t>(digits[i]);
  }
  if (whole == digits.size()) return text;
  return text.append(pFormat.fDecimalSeparator).append(FromUtf8(digits.substr(whole + 1)));
}

double BytesOf(TSizeUnit pUnit, const TValueFormat& pFormat) {
  return static_cast<double>(BytesOfUnit(pUnit, pFormat.fDecimalUnits));
}

TSizeUnit UnitFor(double pMost, const TValueFormat& pFormat) {
  if (pFormat.fPlainByteValues) return TSizeUnit::suBytes;
  if (pFormat.fSizeUnit != TSizeUnit::suAutomatic) return pFormat.fSizeUnit;
  constexpr double kMost = 9.2e18;
  return AutomaticUnit(static_cast<int64_t>(std::clamp(pMost, 0.0, kMost)), pFormat.fDecimalUnits);
}

}  // namespace

TAxis MakeValueAxis(double pLeast, double pMost, int pMostSteps, TColumn pColumn, const TValueFormat& pFormat) {
  const bool isSize = ColumnInfo(pColumn).fKind == TColumnKind::ckSize;
  const int mostSteps = std::max(pMostSteps, 2);  // one step does not always cover values on both sides of a tick
  if (!(pMost > pLeast)) pLeast = 0;
  if (!(pMost > pLeast)) pMost = 1;
  TSizeUnit unit = isSize ? UnitFor(pMost, pFormat) : TSizeUnit::suBytes;
  TStep step;
  // Few digits after the point in a smaller unit are easier to read than many.
  constexpr int kMostDecimals = 3;
  while (true) {
    step =
        StepFor(pLeast / BytesOf(unit, pFormat), pMost / BytesOf(unit, pFormat), mostSteps, unit == TSizeUnit::suBytes);
    const bool mayChange = isSize && pFormat.fSizeUnit == TSizeUnit::suAutomatic && unit > TSizeUnit::suBytes;
    if (step.fExponent >= -kMostDecimals || !mayChange) break;
    unit = static_cast<TSizeUnit>(static_cast<int>(unit) - 1);
  }
  const double width = step.Value() * BytesOf(unit, pFormat);
  const double first = std::floor(pLeast / width);
  const double last = std::max(std::ceil(pMost / width), first + 1);
  TAxis axis{first * width, last * width, {}};
  const bool withUnit = isSize && pFormat.fShowUnits && !pFormat.fPlainByteValues;
  for (double i = first; i <= last; ++i) {
    std::u16string label = NumberText(i, step, pFormat);
    if (withUnit) label.append(u" ").append(UnitName(unit, pFormat.fDecimalUnits));
    axis.fTicks.push_back({i * width, std::move(label)});
  }
  return axis;
}

// --- times ---------------------------------------------------------------------------------------------------------

namespace {

using namespace std::chrono;

constexpr int64_t kMinute = 60;
constexpr int64_t kHour = 60 * kMinute;
constexpr int64_t kDay = 24 * kHour;
constexpr int kUnixDays = 134'774;  // from 1601-01-01, where file times begin, to 1970-01-01

// Steps of a fixed number of seconds, and steps of a number of months.
struct TTimeStep {
  int64_t fSeconds = 0;
  int fMonths = 0;
};

constexpr TTimeStep kTimeSteps[] = {{kMinute},   {5 * kMinute}, {15 * kMinute}, {30 * kMinute}, {kHour},    {3 * kHour},
                                    {6 * kHour}, {12 * kHour},  {kDay},         {2 * kDay},     {7 * kDay}, {14 * kDay},
                                    {0, 1},      {0, 3},        {0, 6},         {0, 12},        {0, 24},    {0, 60},
                                    {0, 120},    {0, 240},      {0, 600},       {0, 1200},      {0, 2400},  {0, 6000},
                                    {0, 12'000}, {0, 24'000},   {0, 60'000},    {0, 120'000}};

int64_t OffsetAt(int64_t pSeconds) {
  int64_t offset = 0;
  if (!LocalOffset({pSeconds * TKivFileTime::kTicksPerSecond}, offset)) offset = 0;
  return offset;
}

int64_t LocalSeconds(TKivFileTime pTime) {
  const int64_t seconds = pTime.fTicks / TKivFileTime::kTicksPerSecond;
  return seconds + OffsetAt(seconds);
}

// The ticks of a local time. At a change of the clock it may be off by the change.
int64_t TicksOfLocal(int64_t pLocalSeconds) {
  const int64_t guess = pLocalSeconds - OffsetAt(pLocalSeconds);
  return (pLocalSeconds - OffsetAt(guess)) * TKivFileTime::kTicksPerSecond;
}

year_month_day DateOf(int64_t pLocalSeconds) {
  return sys_days(days(pLocalSeconds / kDay - kUnixDays));
}

int64_t MonthsOf(int64_t pLocalSeconds) {
  const year_month_day date = DateOf(pLocalSeconds);
  return static_cast<int64_t>(static_cast<int>(date.year())) * 12 + static_cast<unsigned>(date.month()) - 1;
}

int64_t SecondsOfMonths(int64_t pMonths) {
  const year_month_day date = year(static_cast<int>(pMonths / 12)) / month(static_cast<unsigned>(pMonths % 12 + 1)) / 1;
  return (sys_days(date).time_since_epoch().count() + int64_t{kUnixDays}) * kDay;
}

std::string LabelOf(int64_t pLocalSeconds, const TTimeStep& pStep) {
  const year_month_day date = DateOf(pLocalSeconds);
  const int y = static_cast<int>(date.year());
  const unsigned m = static_cast<unsigned>(date.month());
  const unsigned d = static_cast<unsigned>(date.day());
  if (pStep.fMonths >= 12) return fmt::format("{:04}", y);
  if (pStep.fMonths > 0) return fmt::format("{:04}-{:02}", y, m);
  if (pStep.fSeconds >= kDay) return fmt::format("{:04}-{:02}-{:02}", y, m, d);
  const int64_t minutes = pLocalSeconds % kDay / kMinute;
  return fmt::format("{:02}-{:02} {:02}:{:02}", m, d, minutes / 60, minutes % 60);
}

// The local seconds of the ticks. None if there would be more than so many.
std::vector<int64_t> TicksWith(const TTimeStep& pStep, int64_t pFirst, int64_t pLast, int pMostTicks) {
  const bool byMonths = pStep.fMonths > 0;
  const int64_t step = byMonths ? pStep.fMonths : pStep.fSeconds;
  auto at = [&](int64_t pIndex) { return byMonths ? SecondsOfMonths(pIndex * step) : pIndex * step; };
  int64_t index = (byMonths ? MonthsOf(pFirst) : pFirst) / step;
  if (at(index) < pFirst) ++index;
  std::vector<int64_t> ticks;
  for (; at(index) <= pLast; ++index) {
    if (static_cast<int>(ticks.size()) == pMostTicks) return {};
    ticks.push_back(at(index));
  }
  return ticks;
}

}  // namespace

TAxis MakeTimeAxis(TKivFileTime pFirst, TKivFileTime pLast, int pMostTicks) {
  int64_t first = std::min(pFirst, pLast).fTicks;
  int64_t last = std::max(pFirst, pLast).fTicks;
  if (first == last) {
    first = std::max<int64_t>(first - TKivFileTime::kTicksPerDay / 2, 1);
    last = first + TKivFileTime::kTicksPerDay;
  }
  TAxis axis{static_cast<double>(first), static_cast<double>(last), {}};
  for (const TTimeStep& step : kTimeSteps) {
    const std::vector<int64_t> ticks = TicksWith(step, LocalSeconds({first}), LocalSeconds({last}), pMostTicks);
    for (const int64_t tick : ticks) {
      const auto value = static_cast<double>(TicksOfLocal(tick));
      if (value >= axis.fLeast && value <= axis.fMost) axis.fTicks.push_back({value, FromUtf8(LabelOf(tick, step))});
    }
    if (!axis.fTicks.empty()) break;
  }
  return axis;
}

}  // namespace Vantrel::Charts
