// Whether the catalog starts in its sync mode, decided from the sync state
// as it was loaded at start.
//
// A sync state that could not be read, or was damaged and set aside, says
// nothing reliable about whether sync was on. The catalog then acts as if it
// were: in that mode an app missing on this machine is only hidden from view
// and never pruned from the shared arrangement, so nothing another machine
// still needs is lost before the sync engine has sorted things out.
// Otherwise the user's own switch decides.
//
// Thread rules: main thread (it logs).
#pragma once

#include "OrreryCore/sync/SyncStateStore.h"

namespace orrery::app {

bool catalogSyncEnabled(const SyncStateStore::LoadResult& loaded);

}  // namespace orrery::app
