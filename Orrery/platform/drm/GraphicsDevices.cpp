#include "Orrery/platform/drm/GraphicsDevices.h"

#include <string_view>
#include <system_error>

namespace orrery::platform {

bool hasGraphicsDevice(const std::filesystem::path& devices) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(devices, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    const std::string_view view(name);
    if (view.starts_with("renderD") || view.starts_with("card")) return true;
  }
  return false;
}

}  // namespace orrery::platform
