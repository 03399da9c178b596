// SyncPlan: every decision of the sync that needs no platform.
//
// What to do with a snapshot that arrived from the cloud, whether this
// machine may send its own, when to send its device report (and when a
// report that looks too small must first be confirmed by a second scan), and
// which dead entries may be pruned from the shared arrangement. The sync
// engine carries the decisions out; nothing here keeps state.
//
// Thread rules: pure functions over values.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/base/Date.h"
#include "OrreryCore/base/Uuid.h"
#include "OrreryCore/sync/DeviceReport.h"
#include "OrreryCore/sync/SharedSnapshot.h"

namespace orrery::SyncPlan {

// What to do with a received snapshot.
class Incoming {
 public:
  enum class Kind {
    adoptRemote,  // take the remote snapshot as it is
    ask,          // the user chooses between this machine's arrangement and the remote one
    merge,        // apply the merged snapshot; upload it too when sendBack()
  };

  static Incoming adoptRemote(SharedSnapshot remote) { return Incoming(Adopt{std::move(remote)}); }
  static Incoming ask(SharedSnapshot remote) { return Incoming(Ask{std::move(remote)}); }
  static Incoming merge(SharedSnapshot result, bool sendBack) {
    return Incoming(Merge{std::move(result), sendBack});
  }

  Kind kind() const { return static_cast<Kind>(value_.index()); }
  // The remote snapshot (adoptRemote, ask) or the merged one (merge).
  const SharedSnapshot& snapshot() const;
  // True only for a merge whose result differs from what the cloud holds.
  bool sendBack() const;

  friend bool operator==(const Incoming&, const Incoming&) = default;

 private:
  struct Adopt {
    SharedSnapshot remote;
    friend bool operator==(const Adopt&, const Adopt&) = default;
  };
  struct Ask {
    SharedSnapshot remote;
    friend bool operator==(const Ask&, const Ask&) = default;
  };
  struct Merge {
    SharedSnapshot result;
    bool sendBack = false;
    friend bool operator==(const Merge&, const Merge&) = default;
  };
  template <typename Case>
  explicit Incoming(Case value) : value_(std::move(value)) {}
  std::variant<Adopt, Ask, Merge> value_;  // in the order of Kind
};

// What this machine knows of the shared record in the cloud.
enum class RemoteShared {
  none,        // there is no shared record
  readable,    // there is one and it decoded
  unreadable,  // there is one and it did not decode, or is of a newer format
};

enum class ReportDecision { upload, skip, needsConfirmation };

// A report with an unchanged app list is refreshed once a day, so that its
// machine keeps counting as alive.
inline constexpr std::chrono::seconds reportRefresh{86'400};

// Without a base (this machine never agreed on a snapshot with the cloud):
// ask when the local arrangement holds the user's work, else adopt the
// remote one, however new the local one is. With a base: the three-way merge
// (SharedSnapshot::merged), sent back unless the arrangement and settings
// came out as the remote ones.
Incoming incoming(const std::optional<SharedSnapshot>& base, const SharedSnapshot& local,
                  const SharedSnapshot& remote, bool localUserEdited);

// Same arrangement (version, items in order, hidden) and same shared
// settings; format, modified and writer do not count.
bool sameContent(const SharedSnapshot& a, const SharedSnapshot& b);

// Whether applying the remote side overrides a choice made here: never when
// the local side is newer; otherwise when some conflict of the arrangements
// is decided differently depending on which side counts as newer.
bool remoteWinsConflict(const SharedSnapshot& base, const SharedSnapshot& local,
                        const SharedSnapshot& remote);

// The remote arrangement with this machine's visible arrangement folded
// into it: the local order wins for the apps installed here, while folders
// and apps of other machines are kept.
Layout keepingLocalArrangement(const Layout& remote, const Layout& localVisible, const AppIDSet& installed);

// Never overwrite a record that cannot be read; overwrite a readable one only
// after having merged it (a base exists); with no record there is nothing to
// lose.
bool maySendShared(const std::optional<SharedSnapshot>& base, RemoteShared remote);

// An empty scan is never reported; a first or changed app list is; an
// unchanged one once reportRefresh has passed since the last report.
bool shouldUploadReport(const std::optional<DeviceReport>& last, const AppIDSet& installed, Date now);

// As shouldUploadReport, and a report of less than half the apps of the last
// one (when that listed 20 or more) needs a confirming scan first, unless the
// count has been confirmed.
ReportDecision reportDecision(const std::optional<DeviceReport>& last,
                              std::optional<std::int64_t> previousCount, const AppIDSet& installed,
                              bool confirmed, Date now);

// The shared arrangement without the apps that no machine has any more: the
// apps of live reports and this machine's own apps are kept, everything else
// is removed and folders are normalized. Nothing when there is no shared
// arrangement, when another machine that wrote within DeviceReports::window
// has no report within it, when no report counts, or when nothing changes.
std::optional<Layout> pruned(const std::optional<Layout>& shared, const std::vector<DeviceReport>& reports,
                             const AppIDSet& ownInstalled, const Writers& writers, const Uuid& ownID,
                             Date now);

}  // namespace orrery::SyncPlan
