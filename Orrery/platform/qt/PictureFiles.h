// PictureFiles: the two pieces every desktop's picture source shares: a
// picture file read through Qt's image plugins, and a source that asks
// several others in turn.
//
// Thread rules: pictureFile() gives a value any thread may load;
// FirstPictureSource lives on the main thread like its sources.
#pragma once

#include <QString>

#include <memory>
#include <optional>
#include <vector>

#include "Orrery/appearance/DesktopPictureSource.h"

namespace orrery::platform {

// A picture file, read through Qt's image plugins (JPEG, PNG, WebP, SVG and
// whatever else is installed), turned as its EXIF orientation says, and
// decoded no larger than needed to cover the size asked for (JPEG decodes
// at an eighth, a quarter or half its size for far less work).
app::DesktopPicture pictureFile(const QString& path);

// Takes the first picture of `sources`, asked in order, so a desktop whose
// settings name nothing still shows what a tool like feh set; any source's
// change is announced.
class FirstPictureSource final : public app::DesktopPictureSource {
 public:
  explicit FirstPictureSource(std::vector<std::unique_ptr<app::DesktopPictureSource>> sources);
  std::optional<app::DesktopPicture> current() override;

 private:
  std::vector<std::unique_ptr<app::DesktopPictureSource>> sources_;
};

}  // namespace orrery::platform
