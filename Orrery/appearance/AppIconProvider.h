// AppIconProvider: the image provider behind the "image://appicon/…" URLs
// the overlay's delegates show app icons with (see IconCache for the URL).
//
// Each request is answered on the provider's own worker threads from the
// IconStore it shares with the IconCache: at once when the image was
// preloaded, else after reading and decoding it there. Qt Quick asks at
// sourceSize times the device pixel ratio; without a sourceSize, at the
// URL's size.
//
// Thread rules: Qt Quick calls requestImageResponse() on its image loader
// thread; the answer is delivered on that thread. The engine owns the
// provider; destroying it waits for the requests being worked on.
#pragma once

#include <QImage>
#include <QQuickAsyncImageProvider>
#include <QQuickImageResponse>
#include <QSize>
#include <QString>
#include <QThreadPool>

#include <memory>

#include "Orrery/appearance/IconStore.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::app {

// The answer to one request; finished() comes on the thread that asked.
class AppIconResponse final : public QQuickImageResponse {
  Q_OBJECT

 public:
  QQuickTextureFactory* textureFactory() const override;

  // The image delivered; null until finished().
  const QImage& image() const { return image_; }

 public slots:
  void deliver(const QImage& image);

 private:
  QImage image_;
};

class AppIconProvider final : public QQuickAsyncImageProvider {
 public:
  explicit AppIconProvider(std::shared_ptr<IconStore> store);
  ~AppIconProvider() override;

  QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;

  // What an image id asks for: the id is the URL after "image://appicon/"
  // as Qt Quick hands it over, partly percent-decoded.
  struct Request {
    AppInfo app;  // url and modified only
    int pixelSize = 0;
  };
  static Request parse(const QString& id, const QSize& requestedSize);

 private:
  std::shared_ptr<IconStore> store_;
  QThreadPool pool_;
};

}  // namespace orrery::app
