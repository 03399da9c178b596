// LoginItem: the system's registration that starts the program when the
// user logs in. The settings' launchAtLogin mirrors it (LaunchAtLogin).
//
// Implementations: XdgAutostart (an autostart desktop entry, Linux and other
// free desktops); on macOS it is the login-item service of the system.
//
// Thread rules: main thread only.
#pragma once

#include <string>
#include <variant>

#include "OrreryCore/base/Expected.h"

namespace orrery::app {

class LoginItem {
 public:
  enum class Status {
    enabled,
    requiresApproval,  // registered, but the user still has to allow it in the system's settings
    notRegistered,
    notFound,
  };

  virtual ~LoginItem() = default;

  // On failure, a sentence for the user saying what went wrong.
  virtual Expected<std::monostate, std::string> registerItem() = 0;
  virtual Expected<std::monostate, std::string> unregisterItem() = 0;
  // What the system will do at the next login, read afresh.
  virtual Status status() const = 0;

 protected:
  LoginItem() = default;
  LoginItem(const LoginItem&) = default;
  LoginItem& operator=(const LoginItem&) = default;
};

}  // namespace orrery::app
