// OverlayFocus: whether the overlay must take the keyboard back, and whether
// Esc must be caught globally because the overlay's panel cannot hear it.
//
// The overlay panel does not always own the keyboard: the user may click
// into the settings window, another application may be active, a sheet may
// sit on the panel. The controller takes a snapshot of that situation each
// time something changes and asks these two rules what to do. The rules are
// deliberately plain so they can be checked for every combination.
//
// Thread rules: a plain value, built fresh for each evaluation.
#pragma once

#include <cstdint>

namespace orrery {

// Which window receives key events right now.
enum class KeyOwner : std::uint8_t {
  none,         // no key window at all
  panel,        // the overlay's own panel
  panelSheet,   // a sheet attached to the overlay's panel
  otherWindow,  // any other window of this application
};

struct OverlayFocus {
  bool isVisible = false;
  bool takesFocus = false;  // the overlay is in a mode in which it wants the keyboard
  bool appActive = false;   // this application is the active one
  KeyOwner keyOwner = KeyOwner::none;
  bool yielded = false;  // the user deliberately gave the keyboard to another window of ours

  // The overlay is up, wants the keyboard, we are active, the user did not
  // hand the keyboard elsewhere, and neither the panel nor a sheet on it has
  // it.
  bool shouldReclaimKey() const;

  // The overlay is up and wants the keyboard, but its panel will not hear
  // Esc: another application is active (whatever the user yielded), or we
  // are active without the panel or its sheet being key and the user did not
  // yield the keyboard.
  bool needsEscapeFallback() const;

  friend bool operator==(const OverlayFocus&, const OverlayFocus&) = default;
};

}  // namespace orrery
