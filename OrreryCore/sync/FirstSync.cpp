#include "OrreryCore/sync/FirstSync.h"

namespace orrery {

FirstSync decideFirstSync(bool remoteExists, bool localUserEdited) {
  if (!remoteExists) return FirstSync::uploadLocal;
  return localUserEdited ? FirstSync::ask : FirstSync::adoptRemote;
}

}  // namespace orrery
