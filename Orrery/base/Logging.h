// The logging categories of the application, one per area, all under
// "ch.lumenfold.orrery" ("ch.lumenfold.orrery.catalog" and so on), so one
// QT_LOGGING_RULES line can silence or select an area.
//
// Levels: qCCritical for the guards against losing the user's data (a
// discarded scan, a failed save, a sync state that cannot be trusted) and
// for what the user asked for and did not get (an app that did not open),
// qCInfo for notes, qCWarning for trouble that loses nothing.
//
// Thread rules: the categories are safe to use from any thread.
#pragma once

#include <QLoggingCategory>

namespace orrery::app {

Q_DECLARE_LOGGING_CATEGORY(catalogLog)
Q_DECLARE_LOGGING_CATEGORY(settingsLog)
Q_DECLARE_LOGGING_CATEGORY(syncLog)
Q_DECLARE_LOGGING_CATEGORY(shellLog)
Q_DECLARE_LOGGING_CATEGORY(overlayLog)
Q_DECLARE_LOGGING_CATEGORY(launchLog)
Q_DECLARE_LOGGING_CATEGORY(triggerLog)
Q_DECLARE_LOGGING_CATEGORY(appearanceLog)
Q_DECLARE_LOGGING_CATEGORY(trashLog)

}  // namespace orrery::app
