// The real clock reads the steady clock for ticks and the C library's local time for
// the date; an override pins both until it is removed.
#include "platform/Clock.h"

#include <chrono>
#include <ctime>

namespace {

bool g_bOverride = false;
SYSTEMTIME g_OverrideTime{};
unsigned g_nOverrideTicks = 0;

}  // namespace

unsigned GetTickCount() {
  if (g_bOverride) return g_nOverrideTicks;
  const auto nMs = std::chrono::duration_cast<std::chrono::milliseconds>(
                       std::chrono::steady_clock::now().time_since_epoch())
                       .count();
  return static_cast<unsigned>(static_cast<unsigned long long>(nMs));  // wraps at 2^32
}

void GetLocalTime(SYSTEMTIME* pTime) {
  if (pTime == nullptr) return;
  if (g_bOverride) {
    *pTime = g_OverrideTime;
    return;
  }
  const auto now = std::chrono::system_clock::now();
  const std::time_t nSeconds = std::chrono::system_clock::to_time_t(now);
  const auto nMs =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm tmLocal{};
  localtime_r(&nSeconds, &tmLocal);
  pTime->wYear = static_cast<unsigned short>(tmLocal.tm_year + 1900);
  pTime->wMonth = static_cast<unsigned short>(tmLocal.tm_mon + 1);
  pTime->wDayOfWeek = static_cast<unsigned short>(tmLocal.tm_wday);
  pTime->wDay = static_cast<unsigned short>(tmLocal.tm_mday);
  pTime->wHour = static_cast<unsigned short>(tmLocal.tm_hour);
  pTime->wMinute = static_cast<unsigned short>(tmLocal.tm_min);
  // A leap second shows as 60 in tm; the engine's times stop at 59.
  pTime->wSecond = static_cast<unsigned short>(tmLocal.tm_sec > 59 ? 59 : tmLocal.tm_sec);
  pTime->wMilliseconds = static_cast<unsigned short>(nMs < 0 ? 0 : nMs);
}

void SetClockOverride(const SYSTEMTIME* pTime, unsigned nTicks) {
  g_bOverride = pTime != nullptr;
  if (pTime != nullptr) g_OverrideTime = *pTime;
  g_nOverrideTicks = nTicks;
}
