#include <fmt/format.h>

#include "platform/system/FileTime.h"
#include "platform/system/Win32_win32.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

// The daylight-saving rule of the date itself decides the hour, not today's.
bool ToLocal(TKivFileTime pTime, SYSTEMTIME& pLocal) {
  if (!pTime.IsSet()) return false;
  const FILETIME time{static_cast<DWORD>(pTime.fTicks), static_cast<DWORD>(pTime.fTicks >> 32)};
  SYSTEMTIME universal{};
  return FileTimeToSystemTime(&time, &universal) && SystemTimeToTzSpecificLocalTime(nullptr, &universal, &pLocal);
}

// pLength counts the terminating zero; 0 when the system refused.
std::string Formatted(const wchar_t* pText, int pLength) {
  return pLength <= 1 ? std::string() : ToUtf8(Win32::Narrow(pText, static_cast<size_t>(pLength - 1)));
}

}  // namespace

TKivFileTime TKivFileTime::Now() {
  FILETIME now{};
  GetSystemTimePreciseAsFileTime(&now);
  return {static_cast<int64_t>(uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime)};
}

std::string FormatShortDate(TKivFileTime pTime) {
  SYSTEMTIME local{};
  wchar_t text[128];
  if (!ToLocal(pTime, local)) return {};
  return Formatted(text, GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, DATE_SHORTDATE, &local, nullptr, text,
                                         static_cast<int>(std::size(text)), nullptr));
}

std::string FormatLongTime(TKivFileTime pTime) {
  SYSTEMTIME local{};
  wchar_t text[128];
  if (!ToLocal(pTime, local)) return {};
  return Formatted(
      text, GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, 0, &local, nullptr, text, static_cast<int>(std::size(text))));
}

std::string FormatIsoLocal(TKivFileTime pTime) {
  SYSTEMTIME local{};
  if (!ToLocal(pTime, local)) return {};
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", local.wYear, local.wMonth, local.wDay, local.wHour,
                     local.wMinute, local.wSecond);
}

bool LocalOffset(TKivFileTime pTime, int64_t& pSeconds) {
  SYSTEMTIME local{};
  FILETIME ticks{};
  if (!ToLocal(pTime, local) || !SystemTimeToFileTime(&local, &ticks)) return false;
  const int64_t localTicks = int64_t(ticks.dwHighDateTime) << 32 | ticks.dwLowDateTime;
  // The conversion drops fractions of a second. They do not belong to the offset.
  pSeconds = localTicks / TKivFileTime::kTicksPerSecond - pTime.fTicks / TKivFileTime::kTicksPerSecond;
  return true;
}

}  // namespace Vantrel
