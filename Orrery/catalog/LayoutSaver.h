// LayoutSaver: writes the arrangement file on a thread of its own, so that
// an edit never waits for the disk.
//
// A durable save (temporary file, flush, rename, folder flush, backup) can
// take tens of milliseconds; the user's drop or rename must not cost a frame
// for it. save() hands the arrangement over and returns at once. Saves run
// one at a time, in the order they were asked for; an arrangement handed
// over while a save runs waits, and a newer one replaces it, so a burst of
// edits during a slow save costs exactly one more save, of the latest
// arrangement. The outcome of every save that ran comes back on the owner's
// thread through saved().
//
// Nothing is lost at quit: flush() and the destructor wait until the latest
// arrangement handed over is on disk.
//
// All writes to the store's folder go through one saver; the store itself
// must not be used elsewhere while the saver lives, except for reading
// before the first save.
//
// Thread rules: create, call and destroy on one thread with an event loop
// (the main thread); saved() is delivered there.
#pragma once

#include <QObject>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <variant>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/storage/LayoutStore.h"

namespace orrery::app {

class LayoutSaver final : public QObject {
  Q_OBJECT

 public:
  using Outcome = Expected<std::monostate, LayoutStore::SaveError>;

  explicit LayoutSaver(LayoutStore store, QObject* parent = nullptr);
  // Waits for the latest arrangement handed over to be saved.
  ~LayoutSaver() override;

  LayoutSaver(const LayoutSaver&) = delete;
  LayoutSaver& operator=(const LayoutSaver&) = delete;

  // Saves `layout` soon, after the save that runs now, if any.
  void save(Layout layout);

  // Returns once everything handed over is on disk, with saved() already
  // emitted for it.
  void flush();

  // Saves begun since construction; the ones that were replaced before they
  // began do not count.
  std::uint64_t savesStarted() const;

 signals:
  void saved(const orrery::app::LayoutSaver::Outcome& outcome);

 private:
  void run();
  void deliver(Outcome outcome);

  LayoutStore store_;

  mutable std::mutex mutex_;
  std::condition_variable wake_;   // the worker: something to save, or stop
  std::condition_variable idle_;   // flush(): nothing waiting, nothing running
  std::optional<Layout> waiting_;  // the latest arrangement not yet begun
  bool running_ = false;
  bool stopping_ = false;
  std::uint64_t started_ = 0;

  std::thread worker_;  // last: starts once everything above exists
};

}  // namespace orrery::app
