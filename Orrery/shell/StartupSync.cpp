#include "Orrery/shell/StartupSync.h"

#include "Orrery/base/Logging.h"

namespace orrery::app {

bool catalogSyncEnabled(const SyncStateStore::LoadResult& loaded) {
  const char* problem = loaded.unreadable ? "nicht lesbar" : loaded.wasCorrupt ? "kaputt" : nullptr;
  if (problem == nullptr) return loaded.state.enabled;
  qCCritical(syncLog, "sync-state.json %s; Sync gilt vorläufig als an, damit nichts entfernt wird", problem);
  return true;
}

}  // namespace orrery::app
