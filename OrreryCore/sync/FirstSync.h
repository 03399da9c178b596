// FirstSync: what a machine does at its very first exchange with the cloud.
//
// With nothing in the cloud it uploads its own arrangement. With a shared
// record there, it takes that record unless its own arrangement holds the
// user's work; then the user chooses, because either choice would otherwise
// throw away an arrangement someone cared about.
//
// Thread rules: a pure function.
#pragma once

namespace orrery {

enum class FirstSync { uploadLocal, adoptRemote, ask };

FirstSync decideFirstSync(bool remoteExists, bool localUserEdited);

}  // namespace orrery
