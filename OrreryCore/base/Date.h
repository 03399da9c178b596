// Date: a moment in time, and its form on the wire.
//
// Records that travel (sync state, shared snapshot, device reports) carry
// dates as seconds since 2001-01-01T00:00:00Z, a JSON number with a
// fractional part. The helpers here convert both ways and format the
// ISO 8601 stamps used in dated file names.
//
// Thread rules: plain functions over values.
#pragma once

#include <chrono>
#include <string>

namespace orrery {

using Date = std::chrono::system_clock::time_point;

// 2001-01-01T00:00:00Z.
Date referenceDate();

// Seconds since 2001-01-01T00:00:00Z, fractional.
double secondsSinceReferenceDate(Date date);
Date dateFromReferenceSeconds(double seconds);

// UTC ISO 8601 with whole seconds, e.g. "2026-11-21T09:05:03Z".
std::string iso8601(Date date);

}  // namespace orrery
