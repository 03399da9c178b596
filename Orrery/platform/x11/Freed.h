// Freed: owns an xcb reply, error or event (malloc'd by libxcb) and frees
// it when it goes out of scope, so no early return leaks one.
//
// Thread rules: a plain owner; used on the thread that received the reply.
#pragma once

#include <cstdlib>

namespace orrery::platform {

template <typename T>
struct Freed {
  explicit Freed(T* pointer) : value(pointer) {}
  ~Freed() { std::free(value); }
  Freed(const Freed&) = delete;
  Freed& operator=(const Freed&) = delete;
  T* operator->() const { return value; }
  explicit operator bool() const { return value != nullptr; }
  T* value;
};

}  // namespace orrery::platform
