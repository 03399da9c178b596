#include "Orrery/base/Logging.h"

namespace orrery::app {

Q_LOGGING_CATEGORY(catalogLog, "ch.lumenfold.orrery.catalog")
Q_LOGGING_CATEGORY(settingsLog, "ch.lumenfold.orrery.settings")
Q_LOGGING_CATEGORY(syncLog, "ch.lumenfold.orrery.sync")
Q_LOGGING_CATEGORY(shellLog, "ch.lumenfold.orrery.shell")
Q_LOGGING_CATEGORY(overlayLog, "ch.lumenfold.orrery.overlay")
Q_LOGGING_CATEGORY(launchLog, "ch.lumenfold.orrery.launch")
Q_LOGGING_CATEGORY(trashLog, "ch.lumenfold.orrery.trash")
Q_LOGGING_CATEGORY(triggerLog, "ch.lumenfold.orrery.triggers")
Q_LOGGING_CATEGORY(appearanceLog, "ch.lumenfold.orrery.appearance")

}  // namespace orrery::app
