#include "Orrery/platform/gio/RunningDesktopApps.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <system_error>

namespace orrery::platform {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view launchedFileKey = "GIO_LAUNCHED_DESKTOP_FILE=";

std::string readAll(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The executable GIO would run for the entry, as an absolute path; empty
// when the entry names none or it is not installed.
std::string executableOf(const std::string& entryPath) {
  GDesktopAppInfo* info = g_desktop_app_info_new_from_filename(entryPath.c_str());
  if (info == nullptr) return {};
  std::string result;
  if (const char* executable = g_app_info_get_executable(G_APP_INFO(info)); executable != nullptr) {
    if (gchar* found = g_find_program_in_path(executable); found != nullptr) {
      std::error_code error;
      const fs::path canonical = fs::canonical(found, error);
      result = error ? std::string(found) : canonical.string();
      g_free(found);
    }
  }
  g_object_unref(info);
  return result;
}

}  // namespace

AppIDSet runningDesktopApps(const std::vector<AppInfo>& apps, const fs::path& procRoot) {
  AppIDSet running;
  if (apps.empty()) return running;
  std::map<std::string, std::string> byEntry;       // entry path -> app ID
  std::map<std::string, std::string> byExecutable;  // program path -> app ID
  for (const AppInfo& app : apps) {
    byEntry.emplace(app.url, app.id);
    if (std::string executable = executableOf(app.url); !executable.empty())
      byExecutable.emplace(std::move(executable), app.id);
  }
  std::error_code error;
  for (const fs::directory_entry& process : fs::directory_iterator(procRoot, error)) {
    const std::string pid = process.path().filename().string();
    if (pid.empty() || !std::all_of(pid.begin(), pid.end(), [](char c) { return std::isdigit(c) != 0; }))
      continue;
    const std::string environment = readAll(process.path() / "environ");
    for (std::size_t start = 0; start < environment.size();) {
      std::size_t end = environment.find('\0', start);
      if (end == std::string::npos) end = environment.size();
      const std::string_view variable(environment.data() + start, end - start);
      if (variable.starts_with(launchedFileKey)) {
        const auto found = byEntry.find(std::string(variable.substr(launchedFileKey.size())));
        if (found != byEntry.end()) running.insert(found->second);
        break;
      }
      start = end + 1;
    }
    std::error_code linkError;
    const fs::path program = fs::read_symlink(process.path() / "exe", linkError);
    if (linkError) continue;
    const auto found = byExecutable.find(program.string());
    if (found != byExecutable.end()) running.insert(found->second);
  }
  return running;
}

}  // namespace orrery::platform
