#include "OrreryCore/base/Date.h"

#include <cmath>
#include <cstdint>
#include <ctime>
#include <limits>

namespace orrery {

namespace {
// 2001-01-01T00:00:00Z in Unix seconds.
constexpr std::int64_t kReferenceUnixSeconds = 978307200;
}  // namespace

Date referenceDate() { return Date(std::chrono::seconds(kReferenceUnixSeconds)); }

double secondsSinceReferenceDate(Date date) {
  const std::chrono::duration<double> since = date - referenceDate();
  return since.count();
}

Date dateFromReferenceSeconds(double seconds) {
  // Clamp what a foreign file may hold (NaN, ±inf, 1e300) to the range the
  // clock can represent, so conversion never overflows.
  using Rep = Date::duration::rep;
  const double period = static_cast<double>(Date::period::den) / static_cast<double>(Date::period::num);
  const double limit = static_cast<double>(std::numeric_limits<Rep>::max()) / period / 2.0;
  if (std::isnan(seconds)) seconds = 0;
  if (seconds > limit) seconds = limit;
  if (seconds < -limit) seconds = -limit;
  const auto ticks = static_cast<Rep>(std::llround(seconds * period));
  return referenceDate() + Date::duration(ticks);
}

std::string iso8601(Date date) {
  const std::time_t seconds =
      std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(date));
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char buffer[32];
  std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &utc);
  return buffer;
}

}  // namespace orrery
