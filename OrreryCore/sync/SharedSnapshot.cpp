#include "OrreryCore/sync/SharedSnapshot.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "OrreryCore/arrangement/LayoutMerge.h"
#include "OrreryCore/settings/SettingsCoding.h"
#include "OrreryCore/sync/SyncCoding.h"

namespace orrery {

std::optional<SharedSnapshot> SharedSnapshot::decode(std::string_view bytes) {
  const auto parsed = nlohmann::json::parse(bytes.begin(), bytes.end(), nullptr, false);
  if (parsed.is_discarded()) return std::nullopt;
  return readable(parsed);
}

std::optional<SharedSnapshot> SharedSnapshot::readable(const nlohmann::json& json) {
  auto snapshot = fromJson(json);
  if (!snapshot || snapshot->format > currentFormat) return std::nullopt;
  return std::move(*snapshot);
}

std::string SharedSnapshot::encoded() const {
  // Replace rather than throw on invalid UTF-8 in an app ID or folder name:
  // one odd name must not keep the whole arrangement from syncing.
  return toJson().dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

nlohmann::json SharedSnapshot::toJson() const {
  return nlohmann::json{{"format", format},
                        {"layout", layout.toJson()},
                        {"settings", settings.toJson()},
                        {"modified", syncCoding::dateJson(modified)},
                        {"writer", writer.text()}};
}

Expected<SharedSnapshot, DecodingError> SharedSnapshot::fromJson(const nlohmann::json& json) {
  using namespace syncCoding;
  const auto root = object(json, "");
  if (!root) return Unexpected(root.error());
  SharedSnapshot snapshot;

  const auto formatValue = required(json, "format");
  if (!formatValue) return Unexpected(formatValue.error());
  const auto decodedFormat = settingsCoding::integer(**formatValue, "format");
  if (!decodedFormat) return Unexpected(decodedFormat.error());
  snapshot.format = *decodedFormat;

  const auto layoutValue = required(json, "layout");
  if (!layoutValue) return Unexpected(layoutValue.error());
  auto decodedLayout = Layout::fromJson(**layoutValue);
  if (!decodedLayout) {
    DecodingError error = decodedLayout.error();
    error.path = error.path.empty() ? "layout" : "layout." + error.path;
    return Unexpected(std::move(error));
  }
  snapshot.layout = std::move(*decodedLayout);

  const auto settingsValue = required(json, "settings");
  if (!settingsValue) return Unexpected(settingsValue.error());
  auto decodedSettings = SyncedSettings::fromJson(**settingsValue);
  if (!decodedSettings) {
    DecodingError error = decodedSettings.error();
    error.path = error.path.empty() ? "settings" : "settings." + error.path;
    return Unexpected(std::move(error));
  }
  snapshot.settings = std::move(*decodedSettings);

  const auto modifiedValue = required(json, "modified");
  if (!modifiedValue) return Unexpected(modifiedValue.error());
  const auto decodedModified = date(**modifiedValue, "modified");
  if (!decodedModified) return Unexpected(decodedModified.error());
  snapshot.modified = *decodedModified;

  const auto writerValue = required(json, "writer");
  if (!writerValue) return Unexpected(writerValue.error());
  const auto decodedWriter = uuid(**writerValue, "writer");
  if (!decodedWriter) return Unexpected(decodedWriter.error());
  snapshot.writer = *decodedWriter;

  return snapshot;
}

SharedSnapshot SharedSnapshot::merged(const SharedSnapshot& base, const SharedSnapshot& local,
                                      const SharedSnapshot& remote) {
  const bool localIsNewer = local.modified > remote.modified;
  return SharedSnapshot{currentFormat,
                        LayoutMerge::merge(base.layout, local.layout, remote.layout, localIsNewer),
                        SyncedSettings::merge(base.settings, local.settings, remote.settings, localIsNewer),
                        std::max(local.modified, remote.modified), local.writer};
}

}  // namespace orrery
