#include "Orrery/shell/AppListing.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <unordered_map>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"

namespace orrery::app {

namespace {

// Tabs and line breaks in a name would split the columns.
std::string field(std::string text) {
  for (char& c : text) {
    if (c == '\t' || c == '\n' || c == '\r') c = ' ';
  }
  return text;
}

}  // namespace

int listApps(const AppScanner& scanner, const std::filesystem::path& layoutFile, bool all, std::ostream& out,
             std::ostream& errors) {
  std::vector<WithheldEntry> withheld;
  const std::vector<AppInfo> apps = scanner.scan(all ? &withheld : nullptr);

  Layout saved;
  std::error_code missing;
  if (std::filesystem::exists(layoutFile, missing)) {
    std::ifstream in(layoutFile, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    auto decoded = Layout::decode(bytes);
    if (in.bad() || !decoded) {
      errors << "orrery: " << layoutFile.string()
             << " cannot be read; the apps follow in name order, as the program would place them\n";
    } else {
      saved = std::move(*decoded);
    }
  }
  const Layout layout = saved.reconciled(apps, {});

  std::unordered_map<std::string, const AppInfo*> byID;
  for (const AppInfo& app : apps) byID.emplace(app.id, &app);
  const auto line = [&](const std::string& id, const std::string& note = {}) {
    const auto found = byID.find(id);
    if (found == byID.end()) return;
    out << field(id) << '\t' << field(found->second->name) << '\t' << field(found->second->url);
    if (!note.empty()) out << '\t' << note;
    out << '\n';
  };
  for (const LayoutItem& item : layout.items) {
    if (const std::string* id = item.appID()) {
      line(*id);
    } else if (const Folder* folder = item.asFolder()) {
      out << "# Folder: " << field(folder->name) << '\n';
      for (const std::string& member : folder->appIDs) line(member);
    }
  }
  if (all) {
    for (const std::string& id : layout.hidden) line(id, "withheld: hidden in Orrery");
    // By id, and for one id in the order of the folders, so a masked entry
    // follows the one that masks it.
    std::ranges::stable_sort(withheld, {}, &WithheldEntry::id);
    for (const WithheldEntry& entry : withheld) {
      out << field(entry.id) << "\t\t" << field(entry.url) << "\twithheld: " << entry.reason << '\n';
    }
  }
  out.flush();
  return out ? 0 : 1;
}

}  // namespace orrery::app
