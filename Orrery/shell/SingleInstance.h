// SingleInstance: one running program per user session, and one per data
// folder.
//
// The session's program owns the name "ch.lumenfold.Orrery" on the session
// bus; where there is no session bus (or it cannot be reached) it listens
// on a local socket in the runtime folder ($XDG_RUNTIME_DIR), guarded by a
// lock file beside it. A
// later start finds the name owned (or the lock held), hands its command
// line to the running program, waits until that program has taken it, and
// ends. This is what makes "orrery --toggle" a command any desktop can bind
// to a key.
//
// Separately, the program holds a lock file in its data folder for its
// whole life: two programs on the same folder (say on two buses, or in two
// sessions of the same user) would both save layout.json and undo each
// other's work. A lock left behind by a program that crashed is recognised
// (its process is gone) and taken over. Programs with different data
// folders and different sessions (tests) run side by side.
//
// Thread rules: claim() and claimDataDirectory() on any thread (a claim
// that hands over blocks until the running program answered); an
// InstanceChannel lives on the thread that claimed it and needs its event
// loop.
#pragma once

#include <QLockFile>
#include <QObject>
#include <QString>
#include <QStringList>

#include <filesystem>
#include <memory>

class QLocalServer;

namespace orrery::app {

struct InstanceClaim {
  // Held for the life of the program; null when the folder could not be claimed.
  std::unique_ptr<QLockFile> lock;
  // Another running program holds the folder.
  bool anotherIsRunning = false;
};

InstanceClaim claimDataDirectory(const std::filesystem::path& directory);

class InstanceChannel final : public QObject {
  Q_OBJECT

 public:
  static constexpr const char* busName = "ch.lumenfold.Orrery";
  static constexpr const char* objectPath = "/ch/lumenfold/Orrery";

  // Where the session's program is found.
  struct Where {
    bool sessionBus = true;  // false: the local socket in runtimeFolder
    QString runtimeFolder;
  };

  struct Claim {
    // This start is the session's program: the channel tells it what later
    // starts ask for. Null otherwise.
    std::unique_ptr<InstanceChannel> channel;
    // The running program took this start's command line.
    bool handedOver = false;
    // Why neither happened; the program then runs on its own.
    QString problem;
  };

  // Becomes the session's program, or hands `arguments` (program name
  // first) to the one that runs.
  static Claim claim(const QStringList& arguments, const Where& where);

  ~InstanceChannel() override;

 signals:
  // A later start's command line, program name first.
  void commandLineReceived(const QStringList& arguments);

 private:
  InstanceChannel() = default;
  static Claim claimOnBus(const QStringList& arguments);
  static Claim claimSocket(const QStringList& arguments, const QString& folder);
  void serve(QLocalServer* server);

  std::unique_ptr<QLockFile> socketLock_;
  QLocalServer* server_ = nullptr;
  QObject* busEndpoint_ = nullptr;
};

}  // namespace orrery::app
