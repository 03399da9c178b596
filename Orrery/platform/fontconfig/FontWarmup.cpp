#include "Orrery/platform/fontconfig/FontWarmup.h"

#include <fontconfig/fontconfig.h>

namespace orrery::platform {

std::jthread readFontConfigurationInBackground() {
  // A second caller while this runs builds its own copy and keeps the first
  // to finish, so this can only ever cost time Qt would have spent anyway.
  return std::jthread([] { FcInit(); });
}

}  // namespace orrery::platform
