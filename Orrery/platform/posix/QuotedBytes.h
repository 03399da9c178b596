// quotedBytes: arbitrary bytes as one readable, quoted line, for messages
// about untrusted files (control characters and broken UTF-8 included).
//
// Thread rules: a pure function.
#pragma once

#include <string>
#include <string_view>

namespace orrery::platform {

// `text` in double quotes, with everything but printable ASCII (and the
// quote and backslash themselves) written as \xNN.
inline std::string quotedBytes(std::string_view text) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string quoted = "\"";
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code >= 0x20 && code < 0x7f && c != '"' && c != '\\') {
      quoted += c;
    } else {
      quoted += "\\x";
      quoted += kHex[code >> 4];
      quoted += kHex[code & 0xf];
    }
  }
  return quoted + "\"";
}

}  // namespace orrery::platform
