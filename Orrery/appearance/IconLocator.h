// IconLocator: which icon an app's own file names. App records carry no
// icon, so the overlay asks the file: a desktop entry's Icon key, a
// bundle's CFBundleIconFile. The answer is either the absolute path of an
// image or a name to look up in the icon theme (IconTheme); which one is
// told by whether it starts with "/".
//
// The platform factory makes the one that fits the platform
// (platform::makeIconLocator()).
//
// Thread rules: implementations are immutable; icon() reads the disk and
// may run on any thread, several at once.
#pragma once

#include <string>

#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::app {

class IconLocator {
 public:
  virtual ~IconLocator() = default;

  // The icon `app`'s file names: an absolute path or a theme name; empty
  // when the file names none or cannot be read.
  virtual std::string icon(const AppInfo& app) const = 0;

 protected:
  IconLocator() = default;
  IconLocator(const IconLocator&) = default;
  IconLocator& operator=(const IconLocator&) = default;
};

}  // namespace orrery::app
