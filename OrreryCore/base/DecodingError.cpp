#include "OrreryCore/base/DecodingError.h"

namespace orrery {

std::string DecodingError::description() const {
  const char* kindName = "dataCorrupted";
  switch (kind) {
    case Kind::dataCorrupted:
      kindName = "dataCorrupted";
      break;
    case Kind::keyNotFound:
      kindName = "keyNotFound";
      break;
    case Kind::typeMismatch:
      kindName = "typeMismatch";
      break;
    case Kind::valueNotFound:
      kindName = "valueNotFound";
      break;
  }
  std::string out = kindName;
  if (!path.empty()) out += " at " + path;
  out += ": " + message;
  return out;
}

}  // namespace orrery
