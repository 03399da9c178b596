// AppBundleFormat: macOS application bundles.
//
// A candidate is a folder whose name ends in ".app" (exactly: "Foo.APP" is
// an ordinary folder and is searched like one). Its record comes from
// "Contents/Info.plist", XML or binary, read with libplist:
//   name  CFBundleDisplayName, else CFBundleName, else the folder's name
//         without ".app";
//   id    CFBundleIdentifier, else the bundle's path;
//   modified  the modification time of the bundle entry itself (for a
//         symbolic link, the link's).
// Only non-empty strings count. A missing, unreadable or malformed plist is
// read as an empty dictionary, so such a bundle is still listed under its
// folder name. Every bundle is listed.
//
// Thread rules: immutable after construction; read() may run on any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "OrreryCore/catalog/BundleFormat.h"

namespace orrery::platform {

class AppBundleFormat final : public BundleFormat {
 public:
  // `homeFolder` gives the per-user applications folder; empty leaves it out.
  explicit AppBundleFormat(std::string homeFolder);

  // "/Applications", the user's "Applications", "/System/Applications".
  std::vector<std::string> defaultRoots() const override;
  bool isCandidate(std::string_view name) const override;
  Kind candidateKind() const override { return Kind::directory; }
  std::unique_ptr<Reader> startScan() const override;

  // The record of the bundle at `path`.
  BundleRecord read(const std::string& path) const;

 private:
  std::string homeFolder_;
};

}  // namespace orrery::platform
