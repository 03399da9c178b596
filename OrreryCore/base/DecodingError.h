// DecodingError: why bytes did not become a record.
//
// Strict decoders (the arrangement, the shared snapshot) fail the whole
// record with one of these; tolerant decoders use it only for bytes that are
// not JSON at all. The kinds follow the usual JSON-decoding vocabulary so a
// log line tells at once whether a key was missing or had the wrong type.
//
// Thread rules: a plain value.
#pragma once

#include <string>

namespace orrery {

struct DecodingError {
  enum class Kind {
    dataCorrupted,  // not JSON, or not the shape expected at all
    keyNotFound,    // a required key is missing
    typeMismatch,   // a key holds a value of the wrong type
    valueNotFound,  // a key holds null where a value is required
  };

  Kind kind = Kind::dataCorrupted;
  // Where in the document, e.g. "items[3].folder._0.id"; empty for the root.
  std::string path;
  std::string message;

  // "typeMismatch at items[3]: Invalid number of keys found, expected one."
  std::string description() const;

  friend bool operator==(const DecodingError&, const DecodingError&) = default;
};

}  // namespace orrery
