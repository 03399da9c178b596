// Expected<T, E>: a value or the reason there is none.
//
// Public operations that can fail return this instead of throwing. It is
// std::expected where the standard library has it; clang 14 (used for the
// fuzzing builds) lacks it, so a small compatible subset stands in there.
// Use only the subset below so both spellings compile: has_value(),
// operator bool, value(), operator*, operator->, error(), and construction
// from a T or from Unexpected(e).
//
// Thread rules: a plain value; no shared state.
#pragma once

#include <version>

#if defined(__cpp_lib_expected)
#include <expected>

namespace orrery {
template <typename T, typename E>
using Expected = std::expected<T, E>;

template <typename E>
constexpr auto Unexpected(E error) {
  return std::unexpected<E>(std::move(error));
}
}  // namespace orrery

#else
#include <cassert>
#include <utility>
#include <variant>

namespace orrery {

template <typename E>
struct UnexpectedValue {
  E error;
};

template <typename E>
constexpr UnexpectedValue<E> Unexpected(E error) {
  return UnexpectedValue<E>{std::move(error)};
}

template <typename T, typename E>
class Expected {
 public:
  Expected(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  template <typename G>
  Expected(UnexpectedValue<G> failure) : state_(std::in_place_index<1>, E(std::move(failure.error))) {}

  bool has_value() const { return state_.index() == 0; }
  explicit operator bool() const { return has_value(); }

  T& value() & { return std::get<0>(state_); }
  const T& value() const& { return std::get<0>(state_); }
  T&& value() && { return std::get<0>(std::move(state_)); }
  T& operator*() & { return value(); }
  const T& operator*() const& { return value(); }
  T&& operator*() && { return std::get<0>(std::move(state_)); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }

  E& error() & { return std::get<1>(state_); }
  const E& error() const& { return std::get<1>(state_); }

  friend bool operator==(const Expected&, const Expected&) = default;

 private:
  std::variant<T, E> state_;
};

}  // namespace orrery
#endif
