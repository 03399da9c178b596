// links: OrreryPlatform
//
// Scanning generated trees of 100, 1,000 and 10,000 desktop entries and
// application bundles, warm (the trees are scanned once before timing, so
// the kernel's caches hold them, as they do for the rescans that follow a
// file-system event).
//
// The reference is GIO's own listing of the same desktop-entry tree:
// g_app_info_get_all() with XDG_DATA_HOME and XDG_DATA_DIRS pointed at the
// tree, keeping what g_app_info_should_show() accepts and asking each for
// its name, which is what a launcher built on GIO does. GIO reads the
// search path from the environment once per process, so each tree size
// runs GIO in a child process forked for it; the child times each listing
// itself and reports the time back. Both sides see the same PATH and no
// XDG_CURRENT_DESKTOP, and the benchmark checks that they list the same
// number of apps. GIO keeps its folder index between calls (it watches the
// folders instead), so its warm listing re-reads the entries but not the
// folders; the scanner reads both every time and sorts the result.
//
// Times are CPU time on both sides (the child reports the CPU time of its
// listing), so a busy machine does not favour either; "per_entry" is CPU
// time divided by the entries in the tree.
#include <benchmark/benchmark.h>

#include <gio/gio.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>

#include <plist/plist.h>

#include "Orrery/platform/bundle/AppBundleFormat.h"
#include "Orrery/platform/xdg/DesktopEntryFormat.h"
#include "OrreryCore/catalog/AppScanner.h"

namespace {

namespace fs = std::filesystem;
using orrery::AppScanner;

// A desktop session's usual PATH, the same for the scanner and GIO.
constexpr const char* kSearchPath = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

const char* const kLocales[] = {"ar", "ca", "cs", "da", "de", "el", "es",    "fi", "fr", "he", "hu", "it",
                                "ja", "ko", "nb", "nl", "pl", "pt", "pt_BR", "ru", "sv", "tr", "uk", "zh_CN"};

class Trees {
 public:
  Trees() {
    std::string pattern = (fs::temp_directory_path() / "orrery-scanbench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    base_ = pattern;
  }
  ~Trees() {
    std::error_code ignored;
    fs::remove_all(base_, ignored);
  }

  // <base>/xdg-N/{home,data}/applications with N entries in data: nine in
  // ten at the top, the rest in a vendor subfolder; one in twenty NoDisplay.
  fs::path desktopTree(int count) {
    const fs::path tree = base_ / ("xdg-" + std::to_string(count));
    if (fs::exists(tree)) return tree;
    fs::create_directories(tree / "home/applications");
    fs::create_directories(tree / "data/applications/vendor");
    fs::create_directories(tree / "config");
    const char* programs[] = {"sh", "env", "/usr/bin/env", "true"};
    for (int i = 0; i < count; ++i) {
      const std::string name = "App " + std::to_string(i);
      std::string text = "[Desktop Entry]\nType=Application\nVersion=1.0\nName=" + name + "\n";
      for (const char* locale : kLocales)
        text += std::string("Name[") + locale + "]=" + name + " " + locale + "\n";
      text += "GenericName=Generated application\nComment=Does generated things\n";
      for (const char* locale : kLocales)
        text += std::string("Comment[") + locale + "]=Does generated things in " + locale + "\n";
      text += std::string("Exec=") + programs[i % 4] + " --app-" + std::to_string(i) + " %U\n";
      text +=
          "Icon=org.example.app" + std::to_string(i) + "\nTerminal=false\nCategories=Utility;Development;\n";
      text += "Keywords=generated;bench;\nStartupNotify=true\nMimeType=text/plain;\n";
      if (i % 20 == 7) text += "NoDisplay=true\n";
      text += "\n[Desktop Action new-window]\nName=New Window\nExec=sh --new-window\n";
      const fs::path file =
          i % 10 == 9
              ? tree / "data/applications/vendor" / ("org.example.app" + std::to_string(i) + ".desktop")
              : tree / "data/applications" / ("org.example.app" + std::to_string(i) + ".desktop");
      std::ofstream(file) << text;
    }
    return tree;
  }

  // <base>/apps-N with N bundles, half with XML and half with binary
  // Info.plist; one in ten in a subfolder.
  fs::path bundleTree(int count) {
    const fs::path tree = base_ / ("apps-" + std::to_string(count));
    if (fs::exists(tree)) return tree;
    for (int i = 0; i < count; ++i) {
      const std::string name = "App " + std::to_string(i);
      const fs::path bundle = (i % 10 == 9 ? tree / "Utilities" : tree) / (name + ".app");
      fs::create_directories(bundle / "Contents/MacOS");
      plist_t dict = plist_new_dict();
      const std::map<std::string, std::string> strings{
          {"CFBundleDisplayName", name},
          {"CFBundleName", name},
          {"CFBundleIdentifier", "org.example.app" + std::to_string(i)},
          {"CFBundleExecutable", "app"},
          {"CFBundlePackageType", "APPL"},
          {"CFBundleShortVersionString", "1.2.3"},
          {"CFBundleVersion", "123"},
          {"CFBundleIconFile", "AppIcon"},
          {"LSMinimumSystemVersion", "13.0"},
          {"NSHumanReadableCopyright", "Copyright 2026 Example"}};
      for (const auto& [key, value] : strings)
        plist_dict_set_item(dict, key.c_str(), plist_new_string(value.c_str()));
      plist_dict_set_item(dict, "NSHighResolutionCapable", plist_new_bool(1));
      char* bytes = nullptr;
      uint32_t length = 0;
      if (i % 2 == 0) {
        plist_to_xml(dict, &bytes, &length);
        std::ofstream(bundle / "Contents/Info.plist", std::ios::binary).write(bytes, length);
        plist_to_xml_free(bytes);
      } else {
        plist_to_bin(dict, &bytes, &length);
        std::ofstream(bundle / "Contents/Info.plist", std::ios::binary).write(bytes, length);
        plist_to_bin_free(bytes);
      }
      plist_free(dict);
    }
    return tree;
  }

 private:
  fs::path base_;
};

Trees& trees() {
  static Trees instance;
  return instance;
}

void reportPerEntry(benchmark::State& state, std::size_t apps) {
  state.counters["apps"] = static_cast<double>(apps);
  state.counters["per_entry"] =
      benchmark::Counter(static_cast<double>(state.range(0)),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

std::size_t expectedListed(int count) { return static_cast<std::size_t>(count - (count + 12) / 20); }

void BM_ScanDesktopEntries(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const fs::path tree = trees().desktopTree(count);
  orrery::platform::DesktopEnvironment environment;
  environment.searchPath = kSearchPath;
  const AppScanner scanner{{(tree / "home/applications").string(), (tree / "data/applications").string()},
                           AppScanner::kDefaultMaxDepth,
                           std::make_shared<orrery::platform::DesktopEntryFormat>(environment)};
  std::size_t apps = scanner.scan().size();
  if (apps != expectedListed(count)) state.SkipWithError("the scanner listed an unexpected number of apps");
  for (auto _ : state) {
    auto result = scanner.scan();
    apps = result.size();
    benchmark::DoNotOptimize(result);
  }
  reportPerEntry(state, apps);
}

void BM_ScanBundles(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const fs::path tree = trees().bundleTree(count);
  const AppScanner scanner{
      {tree.string()}, AppScanner::kDefaultMaxDepth, std::make_shared<orrery::platform::AppBundleFormat>("")};
  std::size_t apps = scanner.scan().size();
  if (apps != static_cast<std::size_t>(count)) state.SkipWithError("the scanner missed bundles");
  for (auto _ : state) {
    auto result = scanner.scan();
    apps = result.size();
    benchmark::DoNotOptimize(result);
  }
  reportPerEntry(state, apps);
}

// One listing as timed inside the child.
struct GioReply {
  double seconds = 0;
  long apps = 0;
};

double processCpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

[[noreturn]] void serveGioListings(int requests, int replies, const fs::path& tree) {
  setenv("XDG_DATA_HOME", (tree / "home").c_str(), 1);
  setenv("XDG_DATA_DIRS", (tree / "data").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (tree / "config").c_str(), 1);
  setenv("XDG_CONFIG_DIRS", (tree / "config").c_str(), 1);
  setenv("PATH", kSearchPath, 1);
  unsetenv("XDG_CURRENT_DESKTOP");
  char command = 0;
  while (read(requests, &command, 1) == 1 && command == 'l') {
    const double start = processCpuSeconds();
    GList* all = g_app_info_get_all();
    long apps = 0;
    for (GList* item = all; item != nullptr; item = item->next) {
      GAppInfo* info = static_cast<GAppInfo*>(item->data);
      if (g_app_info_should_show(info) && g_app_info_get_name(info) != nullptr) ++apps;
    }
    g_list_free_full(all, g_object_unref);
    const GioReply reply{processCpuSeconds() - start, apps};
    if (write(replies, &reply, sizeof reply) != static_cast<ssize_t>(sizeof reply)) break;
  }
  _exit(0);
}

void BM_GioListing(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const fs::path tree = trees().desktopTree(count);
  int toChild[2];
  int fromChild[2];
  if (pipe(toChild) != 0 || pipe(fromChild) != 0) {
    state.SkipWithError("no pipe");
    return;
  }
  const pid_t child = fork();
  if (child < 0) {
    state.SkipWithError("no fork");
    return;
  }
  if (child == 0) {
    close(toChild[1]);
    close(fromChild[0]);
    serveGioListings(toChild[0], fromChild[1], tree);
  }
  close(toChild[0]);
  close(fromChild[1]);
  const auto list = [&]() -> GioReply {
    GioReply reply;
    if (write(toChild[1], "l", 1) != 1 || read(fromChild[0], &reply, sizeof reply) != sizeof reply)
      reply.apps = -1;
    return reply;
  };

  // The first listing builds GIO's folder index; the timed ones reuse it.
  GioReply reply = list();
  if (reply.apps != static_cast<long>(expectedListed(count)))
    state.SkipWithError("GIO listed a different number of apps than the scanner");
  for (auto _ : state) {
    reply = list();
    state.SetIterationTime(reply.seconds);
  }
  close(toChild[1]);
  close(fromChild[0]);
  waitpid(child, nullptr, 0);
  reportPerEntry(state, static_cast<std::size_t>(reply.apps));
}

BENCHMARK(BM_ScanDesktopEntries)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GioListing)->Arg(100)->Arg(1000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScanBundles)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
