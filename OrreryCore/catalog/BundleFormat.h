// BundleFormat: what an installed application looks like on disk.
//
// The scanner walks folders and applies the order, depth and duplicate
// rules; the format decides the rest: which entry names are candidates, what
// a candidate must be once symbolic links are resolved (a macOS bundle is a
// folder, a freedesktop desktop entry is a file), where the platform keeps
// its applications, and how one candidate becomes a record. The platform
// layer supplies the implementations; the core never knows which one it got.
//
// A candidate can claim an app id without being listed. Desktop entries need
// that: an entry that is hidden or meant for another desktop still hides
// every entry with the same id in later roots, which is how users and
// administrators take an app out of the menu.
//
// Thread rules: implementations are immutable after construction; one scan
// may run on any thread, several at once, with the same format.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "OrreryCore/catalog/AppInfo.h"

namespace orrery {

// One candidate read by a format.
struct BundleRecord {
  AppInfo app;
  // False for a candidate that claims `app.id` but must not be shown. Only
  // `app.id` and `app.url` are meaningful then.
  bool listed = true;
  // Why it is not listed, in the format's own terms ("NoDisplay"); for
  // people asking where an app went.
  std::string withheld{};

  friend bool operator==(const BundleRecord&, const BundleRecord&) = default;
};

class BundleFormat {
 public:
  enum class Kind { directory, regularFile };

  // Reads the candidates of one scan, on the scanning thread only. It may
  // remember what holds for the length of a scan (which programs are
  // installed, the language names are wanted in) and reuse its buffers.
  class Reader {
   public:
    virtual ~Reader() = default;

    // The record of the candidate at `path`, which lies `relativePath` below
    // its root ("Utilities/Terminal.app"). `app.url` is `path` itself, never
    // the target of a link. Never fails: what cannot be read degrades to
    // fallbacks or to an unlisted record.
    virtual BundleRecord read(const std::string& path, std::string_view relativePath) = 0;
  };

  virtual ~BundleFormat() = default;

  // The folders to search on this machine, in priority order.
  virtual std::vector<std::string> defaultRoots() const = 0;

  // Whether an entry of this name is a candidate. Called for every entry the
  // scan meets, so it looks at the name only.
  virtual bool isCandidate(std::string_view name) const = 0;

  // What a candidate must be, with symbolic links resolved, to be read.
  virtual Kind candidateKind() const = 0;

  // A reader for one scan.
  virtual std::unique_ptr<Reader> startScan() const = 0;
};

}  // namespace orrery
