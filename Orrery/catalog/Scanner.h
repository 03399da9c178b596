// Scanner: what the catalog needs from a scan of the application folders:
// the folders themselves (to watch them), how deep the scan looks and which
// entries it never looks into (to watch the same folders, no more), and the
// scan.
//
// FolderScanner is the one the program uses, over the core's AppScanner;
// tests put a scanner in its place whose results and timing they control.
//
// Thread rules: implementations are immutable; scan() runs on a background
// thread while the main thread may ask the other questions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "OrreryCore/catalog/AppInfo.h"
#include "OrreryCore/catalog/AppScanner.h"

namespace orrery::app {

class Scanner {
 public:
  virtual ~Scanner() = default;

  // The folders scanned, in priority order.
  virtual std::vector<std::string> roots() const = 0;
  // How many folder levels below a root are opened (AppScanner's maxDepth).
  virtual int maxDepth() const = 0;
  // Whether an entry of this name is an app, and so never looked into.
  virtual bool isCandidate(std::string_view name) const = 0;
  // The installed apps. Never fails; see AppScanner.
  virtual std::vector<AppInfo> scan() const = 0;

 protected:
  Scanner() = default;
  Scanner(const Scanner&) = default;
  Scanner& operator=(const Scanner&) = default;
};

class FolderScanner final : public Scanner {
 public:
  explicit FolderScanner(AppScanner scanner) : scanner_(std::move(scanner)) {}

  std::vector<std::string> roots() const override { return scanner_.roots; }
  int maxDepth() const override { return scanner_.maxDepth; }
  bool isCandidate(std::string_view name) const override {
    return scanner_.format && scanner_.format->isCandidate(name);
  }
  std::vector<AppInfo> scan() const override { return scanner_.scan(); }

 private:
  AppScanner scanner_;
};

}  // namespace orrery::app
