#include "OrreryCore/sync/DeviceReport.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "OrreryCore/sync/SyncCoding.h"

namespace orrery {

nlohmann::json DeviceReport::toJson() const {
  std::vector<std::string> sorted(installed.begin(), installed.end());
  std::sort(sorted.begin(), sorted.end());
  return nlohmann::json{{"deviceID", deviceID.text()},
                        {"installed", std::move(sorted)},
                        {"lastSeen", syncCoding::dateJson(lastSeen)}};
}

Expected<DeviceReport, DecodingError> DeviceReport::fromJson(const nlohmann::json& json) {
  using namespace syncCoding;
  const auto root = object(json, "");
  if (!root) return Unexpected(root.error());
  DeviceReport report;

  const auto idValue = required(json, "deviceID");
  if (!idValue) return Unexpected(idValue.error());
  const auto id = uuid(**idValue, "deviceID");
  if (!id) return Unexpected(id.error());
  report.deviceID = *id;

  const auto installedValue = required(json, "installed");
  if (!installedValue) return Unexpected(installedValue.error());
  const nlohmann::json& array = **installedValue;
  if (!array.is_array())
    return Unexpected(DecodingError{
        DecodingError::Kind::typeMismatch, "installed",
        std::string("Expected to decode an array but found ") + array.type_name() + " instead."});
  report.installed.reserve(array.size());
  for (std::size_t i = 0; i < array.size(); ++i) {
    if (!array[i].is_string())
      return Unexpected(DecodingError{
          DecodingError::Kind::typeMismatch, "installed[" + std::to_string(i) + "]",
          std::string("Expected to decode String but found ") + array[i].type_name() + " instead."});
    report.installed.insert(array[i].get<std::string>());
  }

  const auto seenValue = required(json, "lastSeen");
  if (!seenValue) return Unexpected(seenValue.error());
  const auto seen = date(**seenValue, "lastSeen");
  if (!seen) return Unexpected(seen.error());
  report.lastSeen = *seen;
  return report;
}

std::string DeviceReport::encoded() const {
  return toJson().dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

Expected<DeviceReport, DecodingError> DeviceReport::decode(std::string_view bytes) {
  const auto parsed = nlohmann::json::parse(bytes.begin(), bytes.end(), nullptr, false);
  if (parsed.is_discarded())
    return Unexpected(
        DecodingError{DecodingError::Kind::dataCorrupted, "", "The given data was not valid JSON."});
  return fromJson(parsed);
}

namespace DeviceReports {

std::optional<AppIDSet> liveAppIDs(const std::vector<DeviceReport>& reports, Date now) {
  std::optional<AppIDSet> live;
  for (const DeviceReport& report : reports) {
    // A report from the future (a machine with a fast clock) counts.
    if (now - report.lastSeen >= window || report.installed.empty()) continue;
    if (!live) live.emplace();
    live->insert(report.installed.begin(), report.installed.end());
  }
  return live;
}

Writers notingWriter(const Uuid& id, Date at, Writers writers, Date now) {
  const auto [entry, inserted] = writers.try_emplace(id, at);
  if (!inserted) entry->second = std::max(entry->second, at);
  std::erase_if(writers, [&](const auto& writer) { return now - writer.second >= window; });
  return writers;
}

}  // namespace DeviceReports

}  // namespace orrery
