#include <fmt/format.h>

#include <ctime>

#include "platform/system/FileTime.h"

namespace Vantrel {

namespace {

bool ToLocal(TKivFileTime pTime, tm& pLocal) {
  if (!pTime.IsSet()) return false;
  // Rounds down to whole seconds, before 1970 as well, since ticks since 1601 are never negative.
  const time_t seconds =
      pTime.fTicks / TKivFileTime::kTicksPerSecond - TKivFileTime::kUnixEpoch / TKivFileTime::kTicksPerSecond;
  return localtime_r(&seconds, &pLocal) != nullptr;
}

std::string Format(TKivFileTime pTime, const char* pFormat) {
  tm local{};
  char buffer[128];
  if (!ToLocal(pTime, local)) return {};
  return std::string(buffer, strftime(buffer, sizeof buffer, pFormat, &local));
}

}  // namespace

TKivFileTime TKivFileTime::Now() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return FromUnix(now.tv_sec, static_cast<uint32_t>(now.tv_nsec));
}

std::string FormatShortDate(TKivFileTime pTime) {
  return Format(pTime, "%x");
}
std::string FormatLongTime(TKivFileTime pTime) {
  return Format(pTime, "%X");
}

std::string FormatIsoLocal(TKivFileTime pTime) {
  tm local{};
  if (!ToLocal(pTime, local)) return {};
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                     local.tm_hour, local.tm_min, local.tm_sec);
}

bool LocalOffset(TKivFileTime pTime, int64_t& pSeconds) {
  tm local{};
  if (!ToLocal(pTime, local)) return false;
  pSeconds = local.tm_gmtoff;
  return true;
}

}  // namespace Vantrel
