// FontWarmup: has fontconfig read its configuration and font caches on a
// thread of its own while the program starts.
//
// Fontconfig reads them the first time anyone asks, about 11 ms on a cold
// start, and Qt asks on the main thread when the overlay lays out its first
// label, some 50 ms into the start: right on the way to the first frame.
// Asked first from here, the reading happens beside Qt's own start, and Qt
// finds it done.
//
// Thread rules: FcInit() may be called from any thread; the returned thread
// is joined when it goes (at the end of main at the latest).
#pragma once

#include <thread>

namespace orrery::platform {

std::jthread readFontConfigurationInBackground();

}  // namespace orrery::platform
