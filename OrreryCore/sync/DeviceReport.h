// DeviceReport: which apps one machine has installed, and when it said so.
// DeviceReports: the rules that decide which reports still count.
//
// Every machine publishes its own report beside the shared snapshot. Together
// the reports tell which apps some machine still has, so that apps no machine
// has any more can be pruned from the shared arrangement, and only while
// every recently active machine has reported (see SyncPlan::pruned).
//
// A report is read strictly: "deviceID" (a UUID, written upper-case),
// "installed" (an array of app IDs, written sorted so the same report always
// gives the same bytes) and "lastSeen" (seconds since 2001-01-01T00:00:00Z)
// are all required.
//
// Writers: per writing machine, the time of its latest write seen in the
// shared record; machines that wrote within `window` are expected to report.
//
// Thread rules: plain values and pure functions.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/base/Date.h"
#include "OrreryCore/base/DecodingError.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/base/Uuid.h"

namespace orrery {

struct DeviceReport {
  Uuid deviceID;
  AppIDSet installed;
  Date lastSeen{};

  friend bool operator==(const DeviceReport&, const DeviceReport&) = default;

  nlohmann::json toJson() const;
  static Expected<DeviceReport, DecodingError> fromJson(const nlohmann::json& json);
  // Compact JSON with sorted keys and sorted app IDs.
  std::string encoded() const;
  static Expected<DeviceReport, DecodingError> decode(std::string_view bytes);
};

// Per writing machine, its latest write seen. Ordered, so it encodes the same
// way every time.
using Writers = std::map<Uuid, Date>;

namespace DeviceReports {

// How long a report, or a machine's last write, keeps counting: 30 days.
inline constexpr std::chrono::seconds window{2'592'000};

// The union of the installed apps of every report seen less than `window`
// before `now` that lists at least one app. Nothing (not an empty set) when
// no report counts: then no machine's word can be relied on.
std::optional<AppIDSet> liveAppIDs(const std::vector<DeviceReport>& reports, Date now);

// Records a write by `id` at `at` (an older date than the one known keeps the
// known one) and drops every writer whose date lies `window` or more before
// `now`.
Writers notingWriter(const Uuid& id, Date at, Writers writers, Date now);

}  // namespace DeviceReports

}  // namespace orrery
