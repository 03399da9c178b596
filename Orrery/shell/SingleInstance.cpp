#include "Orrery/shell/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDataStream>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>

namespace orrery::app {

namespace {

constexpr int kAnswerLimitMs = 10'000;
constexpr char kInterface[] = "ch.lumenfold.Orrery";

// What the bus calls; it only passes the line on.
class BusEndpoint final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "ch.lumenfold.Orrery")

 public:
  explicit BusEndpoint(InstanceChannel* channel) : QObject(channel), channel_(channel) {}

 public slots:
  Q_SCRIPTABLE void HandleCommandLine(const QStringList& arguments) {
    emit channel_->commandLineReceived(arguments);
  }

 private:
  InstanceChannel* channel_;
};

QString socketPath(const QString& folder) { return folder + QStringLiteral("/ch.lumenfold.Orrery.socket"); }

// The line as sent over the socket: a length-prefixed QDataStream frame.
QByteArray frame(const QStringList& arguments) {
  QByteArray bytes;
  QDataStream out(&bytes, QIODevice::WriteOnly);
  out.setVersion(QDataStream::Qt_6_0);
  out << arguments;
  return bytes;
}

}  // namespace

InstanceClaim claimDataDirectory(const std::filesystem::path& directory) {
  const QString folder = QFile::decodeName(QByteArray::fromStdString(directory.string()));
  if (!QDir().mkpath(folder)) return {};
  auto lock = std::make_unique<QLockFile>(folder + QStringLiteral("/.orrery.lock"));
  // Held for the life of the program: only a dead owner makes it stale,
  // never its age.
  lock->setStaleLockTime(0);
  if (lock->tryLock(0)) return {std::move(lock), false};
  return {nullptr, lock->error() == QLockFile::LockFailedError};
}

InstanceChannel::~InstanceChannel() {
  if (busEndpoint_) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterObject(QString::fromLatin1(objectPath));
    bus.unregisterService(QString::fromLatin1(busName));
  }
  if (server_) server_->close();
}

InstanceChannel::Claim InstanceChannel::claim(const QStringList& arguments, const Where& where) {
  // A bus that was named but cannot be reached is no reason to run twice:
  // the socket still finds a program started the same way.
  if (where.sessionBus && QDBusConnection::sessionBus().isConnected()) return claimOnBus(arguments);
  return claimSocket(arguments, where.runtimeFolder);
}

InstanceChannel::Claim InstanceChannel::claimOnBus(const QStringList& arguments) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected())
    return {nullptr, false, QStringLiteral("no session bus: %1").arg(bus.lastError().message())};
  std::unique_ptr<InstanceChannel> channel(new InstanceChannel);
  auto* endpoint = new BusEndpoint(channel.get());
  // The object is there before the name, so a start that finds the name
  // always finds something to call.
  if (!bus.registerObject(QString::fromLatin1(objectPath), endpoint,
                          QDBusConnection::ExportScriptableSlots)) {
    return {nullptr, false,
            QStringLiteral("cannot export %1 on the session bus").arg(QLatin1String(objectPath))};
  }
  const auto reply = bus.interface()->registerService(QString::fromLatin1(busName),
                                                      QDBusConnectionInterface::DontQueueService,
                                                      QDBusConnectionInterface::DontAllowReplacement);
  if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered) {
    channel->busEndpoint_ = endpoint;
    return {std::move(channel), false, {}};
  }
  bus.unregisterObject(QString::fromLatin1(objectPath));
  channel.reset();

  auto call =
      QDBusMessage::createMethodCall(QString::fromLatin1(busName), QString::fromLatin1(objectPath),
                                     QString::fromLatin1(kInterface), QStringLiteral("HandleCommandLine"));
  call << arguments;
  const QDBusMessage answer = bus.call(call, QDBus::Block, kAnswerLimitMs);
  if (answer.type() == QDBusMessage::ReplyMessage) return {nullptr, true, {}};
  return {nullptr, false, QStringLiteral("the running Orrery did not answer: %1").arg(answer.errorMessage())};
}

InstanceChannel::Claim InstanceChannel::claimSocket(const QStringList& arguments, const QString& folder) {
  if (folder.isEmpty() || !QDir().mkpath(folder)) {
    return {nullptr, false, QStringLiteral("no runtime folder for the instance socket")};
  }
  const QString path = socketPath(folder);
  auto lock = std::make_unique<QLockFile>(path + QStringLiteral(".lock"));
  lock->setStaleLockTime(0);
  if (lock->tryLock(0)) {
    std::unique_ptr<InstanceChannel> channel(new InstanceChannel);
    channel->socketLock_ = std::move(lock);
    // A socket file left by a program that crashed: the lock says no one serves it.
    QLocalServer::removeServer(path);
    auto* server = new QLocalServer(channel.get());
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(path)) {
      return {nullptr, false, QStringLiteral("cannot listen on %1: %2").arg(path, server->errorString())};
    }
    channel->serve(server);
    return {std::move(channel), false, {}};
  }
  if (lock->error() != QLockFile::LockFailedError) {
    return {nullptr, false, QStringLiteral("cannot lock %1").arg(path + QStringLiteral(".lock"))};
  }

  // The running program may hold the lock but not listen yet: it is
  // starting. Try again until it answers or the limit passes.
  const QDeadlineTimer deadline(kAnswerLimitMs);
  QString problem;
  while (!deadline.hasExpired()) {
    QLocalSocket socket;
    socket.connectToServer(path);
    if (socket.waitForConnected(static_cast<int>(deadline.remainingTime()))) {
      const QByteArray message = frame(arguments);
      QDataStream out(&socket);
      out.setVersion(QDataStream::Qt_6_0);
      out << message;
      // One byte back says the line was taken.
      while (socket.bytesAvailable() < 1 &&
             socket.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
      }
      if (socket.bytesAvailable() >= 1) return {nullptr, true, {}};
      problem = socket.errorString();
      break;
    }
    problem = socket.errorString();
    QThread::msleep(20);
  }
  return {nullptr, false, QStringLiteral("the running Orrery did not answer on %1: %2").arg(path, problem)};
}

void InstanceChannel::serve(QLocalServer* server) {
  server_ = server;
  connect(server, &QLocalServer::newConnection, this, [this] {
    while (QLocalSocket* socket = server_->nextPendingConnection()) {
      connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
      connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
        QDataStream in(socket);
        in.setVersion(QDataStream::Qt_6_0);
        in.startTransaction();
        QByteArray message;
        in >> message;
        if (!in.commitTransaction()) return;  // the rest is still coming
        QDataStream fields(message);
        fields.setVersion(QDataStream::Qt_6_0);
        QStringList arguments;
        fields >> arguments;
        // Answered once the line was acted on, as over the bus.
        if (fields.status() == QDataStream::Ok) emit commandLineReceived(arguments);
        socket->write("1", 1);
        socket->flush();
        socket->disconnectFromServer();
      });
    }
  });
}

}  // namespace orrery::app

#include "SingleInstance.moc"
