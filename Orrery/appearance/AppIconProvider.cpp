#include "Orrery/appearance/AppIconProvider.h"

#include <QImage>
#include <QObject>
#include <QQuickTextureFactory>
#include <QRunnable>
#include <QUrlQuery>

#include <algorithm>
#include <utility>

namespace orrery::app {

namespace {

// The size asked for when neither the Image nor the URL gives one.
constexpr int kDefaultPixelSize = 128;

// Makes one image on a worker. The image comes back through a signal
// rather than a call on the response: Qt Quick deletes a response whose
// request it cancelled, and a queued signal to a deleted object is simply
// dropped.
class IconJob final : public QObject, public QRunnable {
  Q_OBJECT

 public:
  IconJob(std::shared_ptr<IconStore> store, AppIconProvider::Request request)
      : store_(std::move(store)), request_(std::move(request)) {}

  void run() override { emit done(store_->image(request_.app, request_.pixelSize)); }

 signals:
  void done(const QImage& image);

 private:
  std::shared_ptr<IconStore> store_;
  AppIconProvider::Request request_;
};

}  // namespace

QQuickTextureFactory* AppIconResponse::textureFactory() const {
  return QQuickTextureFactory::textureFactoryForImage(image_);
}

void AppIconResponse::deliver(const QImage& image) {
  image_ = image;
  emit finished();
}

AppIconProvider::AppIconProvider(std::shared_ptr<IconStore> store) : store_(std::move(store)) {}

AppIconProvider::~AppIconProvider() { pool_.waitForDone(); }

AppIconProvider::Request AppIconProvider::parse(const QString& id, const QSize& requestedSize) {
  Request request;
  const qsizetype question = id.indexOf(u'?');
  // The path may still hold percent escapes (those Qt keeps: "%25", "%3F",
  // bytes that are not UTF-8); decoding them once more gives the bytes
  // imageSource() encoded.
  const QString path = id.left(question < 0 ? id.size() : question);
  request.app.url = QByteArray::fromPercentEncoding(path.toUtf8()).toStdString();

  const QUrlQuery query(question < 0 ? QString() : id.mid(question + 1));
  bool ok = false;
  const qint64 ticks = query.queryItemValue(QStringLiteral("v")).toLongLong(&ok);
  if (ok) request.app.modified = Date(Date::duration(ticks));

  if (requestedSize.width() > 0 || requestedSize.height() > 0) {
    request.pixelSize = std::max(requestedSize.width(), requestedSize.height());
  } else {
    const int size = query.queryItemValue(QStringLiteral("size")).toInt(&ok);
    request.pixelSize = ok && size > 0 ? size : kDefaultPixelSize;
  }
  return request;
}

QQuickImageResponse* AppIconProvider::requestImageResponse(const QString& id, const QSize& requestedSize) {
  auto* response = new AppIconResponse;
  auto* job = new IconJob(store_, parse(id, requestedSize));
  // The job is deleted by the pool after run(); the connection goes with it.
  job->setAutoDelete(true);
  QObject::connect(job, &IconJob::done, response, &AppIconResponse::deliver, Qt::QueuedConnection);
  pool_.start(job);
  return response;
}

}  // namespace orrery::app

#include "AppIconProvider.moc"
