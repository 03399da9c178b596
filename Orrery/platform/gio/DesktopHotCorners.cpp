#include "Orrery/platform/gio/DesktopHotCorners.h"

#include <gio/gio.h>

#include <fstream>
#include <map>
#include <optional>
#include <sstream>

#include "OrreryCore/text/Localized.h"

namespace orrery::platform {

namespace {

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r'))
    text.remove_suffix(1);
  return text;
}

// group -> key -> value of one KDE config text; "[$i]"-style flags after a
// key are dropped.
using Config = std::map<std::string, std::map<std::string, std::string, std::less<>>, std::less<>>;

Config parse(const std::string& text) {
  Config config;
  std::string group;
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    const std::string_view view = trimmed(line);
    if (view.empty() || view.front() == '#') continue;
    if (view.front() == '[') {
      const auto close = view.find(']');
      group = std::string(view.substr(1, close == std::string_view::npos ? view.size() - 1 : close - 1));
      continue;
    }
    const auto equals = view.find('=');
    if (equals == std::string_view::npos) continue;
    std::string_view key = trimmed(view.substr(0, equals));
    if (const auto flag = key.find('['); flag != std::string_view::npos) key = trimmed(key.substr(0, flag));
    config[group].try_emplace(std::string(key), std::string(trimmed(view.substr(equals + 1))));
  }
  return config;
}

struct KWinCorner {
  std::string_view borderName;  // key in [ElectricBorders]
  int edge;                     // KWin's number of the corner
  std::string_view dockKey;
};
constexpr KWinCorner kCorners[] = {
    {"TopLeft", 7, "wvous-tl-corner"},
    {"TopRight", 1, "wvous-tr-corner"},
    {"BottomLeft", 5, "wvous-bl-corner"},
    {"BottomRight", 3, "wvous-br-corner"},
};

}  // namespace

DockDefaults DesktopHotCorners::fromKWin(const std::vector<std::string>& kwinrcTexts, bool plasmaSession) {
  // The first file that sets a key wins, like KConfig's cascade.
  Config merged;
  for (const std::string& text : kwinrcTexts)
    for (auto& [group, entries] : parse(text))
      for (auto& [key, value] : entries) merged[group].try_emplace(key, value);

  DockDefaults corners;
  bool anyEffectEdges = false;
  for (const auto& [group, entries] : merged) {
    if (!group.starts_with("Effect-")) continue;
    const auto edges = entries.find("BorderActivate");
    if (edges == entries.end()) continue;
    anyEffectEdges = true;
    std::istringstream list(edges->second);
    std::string item;
    while (std::getline(list, item, ',')) {
      for (const KWinCorner& corner : kCorners)
        if (trimmed(item) == std::to_string(corner.edge))
          corners[std::string(corner.dockKey)] = std::int64_t{2};
    }
  }
  if (const auto borders = merged.find("ElectricBorders"); borders != merged.end()) {
    for (const KWinCorner& corner : kCorners) {
      const auto action = borders->second.find(corner.borderName);
      if (action == borders->second.end()) continue;
      corners[std::string(corner.dockKey)] = std::int64_t{action->second == "None" ? 0 : 2};
    }
  }
  const bool overviewSet =
      merged.contains("Effect-overview") && merged.find("Effect-overview")->second.contains("BorderActivate");
  if (plasmaSession && !anyEffectEdges && !overviewSet)
    corners.try_emplace("wvous-tl-corner", std::int64_t{2});
  return corners;
}

bool DesktopHotCorners::gnomeHotCornerEnabled() {
  GSettingsSchemaSource* source = g_settings_schema_source_get_default();
  if (source == nullptr) return false;
  GSettingsSchema* schema = g_settings_schema_source_lookup(source, "org.gnome.desktop.interface", TRUE);
  if (schema == nullptr) return false;
  bool enabled = false;
  if (g_settings_schema_has_key(schema, "enable-hot-corners") != 0) {
    GSettings* settings = g_settings_new_full(schema, nullptr, nullptr);
    enabled = g_settings_get_boolean(settings, "enable-hot-corners") != 0;
    g_object_unref(settings);
  }
  g_settings_schema_unref(schema);
  return enabled;
}

DockDefaults DesktopHotCorners::read() const {
  std::vector<std::string> texts;
  for (const std::string& path : kwinrcFiles) {
    std::ifstream in(path);
    if (!in) continue;
    texts.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  DockDefaults corners = fromKWin(texts, plasmaSession);
  if (gnomeSession && gnomeHotCornerEnabled()) corners["wvous-tl-corner"] = std::int64_t{2};
  return corners;
}

std::string DesktopHotCorners::warning() {
  return text::localized(
      "Your desktop already uses this corner (GNOME: Settings → Multitasking → Hot Corner; KDE: System "
      "Settings → "
      "Screen Edges). Please turn it off there or choose another corner.",
      "Warning in the trigger settings when the chosen hot corner already has an action of the desktop");
}

}  // namespace orrery::platform
