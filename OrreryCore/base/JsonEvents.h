// readJsonEvents: reads a JSON document and reports it to a handler as a
// stream of events (start of an object, a key, a string, …) without building a
// tree.
//
// It exists for the arrangement file, which is read at every start and can
// hold tens of thousands of items: a general-purpose parser spends most of its
// time building each token a character at a time, while this one copies runs
// of plain text in one step and keeps one string buffer for the whole
// document. It accepts exactly what nlohmann::json's strict parser accepts,
// because records that embed an arrangement are read through nlohmann's tree
// and the two must never disagree on whether a document is JSON:
//   - RFC 8259 grammar, nothing more (no comments, no trailing commas, one
//     value per document, only space, tab, line feed and carriage return
//     between tokens); a UTF-8 byte-order mark at the very start is skipped;
//   - a NUL byte after the document ends the text (nlohmann reads C strings
//     too); anything else after the document makes it invalid;
//   - strings must be valid UTF-8 without control characters; \u escapes
//     must pair surrogates correctly (\u0000 is allowed);
//   - an integer that fits is reported as a signed (when negative) or an
//     unsigned 64-bit integer, any other number as a double; a number whose
//     double is infinite (1e400) makes the document invalid.
// Nesting depth is limited only by memory: the reader keeps its own stack.
//
// The handler is any type with these members; each returns false to stop
// reading at once (readJsonEvents then returns `stopped`):
//   bool null(); bool boolean(bool); bool integer(std::int64_t);
//   bool unsignedInteger(std::uint64_t); bool floating(double);
//   bool string(std::string&); bool key(std::string&);   // may move from it
//   bool startObject(); bool endObject(); bool startArray(); bool endArray();
// Events stop at the first syntax error; what came before it was reported.
//
// Thread rules: a pure function over its arguments.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

enum class JsonReadOutcome {
  complete,  // one whole, valid document; every event reported
  invalid,   // not JSON; the events before the fault were reported
  stopped,   // the handler returned false
};

namespace json_events_detail {

// Whether a number that std::from_chars found out of double's range is too
// large (rather than too small, which reads as zero): its decimal magnitude,
// the position of its first significant digit plus its exponent, is positive.
inline bool beyondDoubleRange(const char* p, const char* last) {
  if (*p == '-') ++p;
  std::int64_t magnitude = 0;
  if (*p != '0') {
    const char* digits = p;
    while (p != last && *p >= '0' && *p <= '9') ++p;
    magnitude = (p - digits) - 1;
  } else {
    ++p;
    if (p != last && *p == '.') {
      ++p;
      std::int64_t zeros = 0;
      while (p != last && *p == '0') ++p, ++zeros;
      if (p == last || *p < '1' || *p > '9') return false;  // zero
      magnitude = -(zeros + 1);
    }
  }
  while (p != last && *p != 'e' && *p != 'E') ++p;
  if (p == last) return magnitude > 0;
  ++p;
  const bool negativeExponent = *p == '-';
  if (*p == '-' || *p == '+') ++p;
  std::int64_t exponent = 0;
  for (; p != last; ++p) exponent = std::min<std::int64_t>(exponent * 10 + (*p - '0'), 1'000'000'000);
  return magnitude + (negativeExponent ? -exponent : exponent) > 0;
}

inline bool isHex(unsigned char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

inline unsigned hexValue(unsigned char c) {
  if (c <= '9') return c - '0';
  return (c | 0x20u) - 'a' + 10;
}

inline void appendUtf8(std::string& out, std::uint32_t codePoint) {
  if (codePoint < 0x80) {
    out += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    out += static_cast<char>(0xC0 | (codePoint >> 6));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    out += static_cast<char>(0xE0 | (codePoint >> 12));
    out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (codePoint >> 18));
    out += static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  }
}

template <class Handler>
class EventReader {
 public:
  EventReader(std::string_view text, Handler& handler)
      : p_(reinterpret_cast<const unsigned char*>(text.data())), end_(p_ + text.size()), handler_(handler) {}

  JsonReadOutcome read() {
    if (p_ != end_ && *p_ == 0xEF) {
      if (end_ - p_ < 3 || p_[1] != 0xBB || p_[2] != 0xBF) return JsonReadOutcome::invalid;
      p_ += 3;
    }
    // Containers still open, innermost last: true for an object.
    std::vector<bool> open;
    for (;;) {
      // A value is expected here.
      skipSpace();
      if (p_ == end_) return JsonReadOutcome::invalid;
      bool closed = false;  // the value just read is complete
      switch (*p_) {
        case '{':
        case '[': {
          const bool object = *p_++ == '{';
          if (!(object ? handler_.startObject() : handler_.startArray())) return JsonReadOutcome::stopped;
          skipSpace();
          if (p_ != end_ && *p_ == (object ? '}' : ']')) {
            ++p_;
            if (!end(object)) return JsonReadOutcome::stopped;
            closed = true;
          } else {
            if (object) {
              if (const auto outcome = readKey(); outcome != JsonReadOutcome::complete) return outcome;
            }
            open.push_back(object);
          }
          break;
        }
        case '"':
          ++p_;
          if (!readString()) return JsonReadOutcome::invalid;
          if (!handler_.string(buffer_)) return JsonReadOutcome::stopped;
          closed = true;
          break;
        case 't':
          if (!literal("true")) return JsonReadOutcome::invalid;
          if (!handler_.boolean(true)) return JsonReadOutcome::stopped;
          closed = true;
          break;
        case 'f':
          if (!literal("false")) return JsonReadOutcome::invalid;
          if (!handler_.boolean(false)) return JsonReadOutcome::stopped;
          closed = true;
          break;
        case 'n':
          if (!literal("null")) return JsonReadOutcome::invalid;
          if (!handler_.null()) return JsonReadOutcome::stopped;
          closed = true;
          break;
        default:
          if (const auto outcome = readNumber(); outcome != JsonReadOutcome::complete) return outcome;
          closed = true;
          break;
      }
      if (!closed) continue;

      // After a complete value: a separator, the end of its container, or
      // the end of the document.
      for (;;) {
        skipSpace();
        // nlohmann, made for C strings too, takes a NUL byte for the end of
        // the text; whatever follows one after the document is ignored alike.
        if (open.empty())
          return p_ == end_ || *p_ == '\0' ? JsonReadOutcome::complete : JsonReadOutcome::invalid;
        if (p_ == end_) return JsonReadOutcome::invalid;
        const unsigned char c = *p_++;
        if (c == ',') {
          if (open.back()) {
            skipSpace();
            if (const auto outcome = readKey(); outcome != JsonReadOutcome::complete) return outcome;
          }
          break;  // the next value
        }
        if (c != (open.back() ? '}' : ']')) return JsonReadOutcome::invalid;
        const bool wasObject = open.back();
        open.pop_back();
        if (!end(wasObject)) return JsonReadOutcome::stopped;
      }
    }
  }

 private:
  bool end(bool object) { return object ? handler_.endObject() : handler_.endArray(); }

  void skipSpace() {
    while (p_ != end_ && (*p_ == ' ' || *p_ == '\n' || *p_ == '\r' || *p_ == '\t')) ++p_;
  }

  bool literal(std::string_view word) {
    if (static_cast<std::size_t>(end_ - p_) < word.size() ||
        std::string_view(reinterpret_cast<const char*>(p_), word.size()) != word)
      return false;
    p_ += word.size();
    return true;
  }

  // `"key" :` with the reader standing on the opening quote.
  JsonReadOutcome readKey() {
    if (p_ == end_ || *p_ != '"') return JsonReadOutcome::invalid;
    ++p_;
    if (!readString()) return JsonReadOutcome::invalid;
    skipSpace();
    if (p_ == end_ || *p_ != ':') return JsonReadOutcome::invalid;
    ++p_;
    if (!handler_.key(buffer_)) return JsonReadOutcome::stopped;
    return JsonReadOutcome::complete;
  }

  // The rest of a string after its opening quote, into buffer_.
  bool readString() {
    buffer_.clear();
    for (;;) {
      const unsigned char* run = p_;
      while (p_ != end_ && *p_ >= 0x20 && *p_ < 0x80 && *p_ != '"' && *p_ != '\\') ++p_;
      buffer_.append(reinterpret_cast<const char*>(run), static_cast<std::size_t>(p_ - run));
      if (p_ == end_) return false;
      const unsigned char c = *p_;
      if (c == '"') {
        ++p_;
        return true;
      }
      if (c < 0x20) return false;
      if (c == '\\') {
        if (!readEscape()) return false;
      } else if (!readMultiByte()) {
        return false;
      }
    }
  }

  bool readEscape() {
    ++p_;
    if (p_ == end_) return false;
    switch (*p_++) {
      case '"':
        buffer_ += '"';
        return true;
      case '\\':
        buffer_ += '\\';
        return true;
      case '/':
        buffer_ += '/';
        return true;
      case 'b':
        buffer_ += '\b';
        return true;
      case 'f':
        buffer_ += '\f';
        return true;
      case 'n':
        buffer_ += '\n';
        return true;
      case 'r':
        buffer_ += '\r';
        return true;
      case 't':
        buffer_ += '\t';
        return true;
      case 'u':
        break;
      default:
        return false;
    }
    std::uint32_t unit = 0;
    if (!hex4(unit)) return false;
    if (unit >= 0xDC00 && unit <= 0xDFFF) return false;  // a low surrogate first
    if (unit >= 0xD800 && unit <= 0xDBFF) {
      std::uint32_t low = 0;
      if (end_ - p_ < 2 || p_[0] != '\\' || p_[1] != 'u') return false;
      p_ += 2;
      if (!hex4(low) || low < 0xDC00 || low > 0xDFFF) return false;
      unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
    }
    appendUtf8(buffer_, unit);
    return true;
  }

  bool hex4(std::uint32_t& value) {
    if (end_ - p_ < 4) return false;
    for (int i = 0; i < 4; ++i) {
      if (!isHex(p_[i])) return false;
      value = (value << 4) | hexValue(p_[i]);
    }
    p_ += 4;
    return true;
  }

  // One UTF-8 sequence of two to four bytes, checked as RFC 3629 has it
  // (no overlong forms, no surrogates, nothing above U+10FFFF).
  bool readMultiByte() {
    const unsigned char lead = *p_;
    unsigned char low = 0x80, high = 0xBF;  // range of the first continuation byte
    int continuations = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
      continuations = 1;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      continuations = 2;
      if (lead == 0xE0) low = 0xA0;
      if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      continuations = 3;
      if (lead == 0xF0) low = 0x90;
      if (lead == 0xF4) high = 0x8F;
    } else {
      return false;
    }
    if (end_ - p_ <= continuations) return false;
    if (p_[1] < low || p_[1] > high) return false;
    for (int i = 2; i <= continuations; ++i)
      if (p_[i] < 0x80 || p_[i] > 0xBF) return false;
    buffer_.append(reinterpret_cast<const char*>(p_), static_cast<std::size_t>(continuations + 1));
    p_ += continuations + 1;
    return true;
  }

  JsonReadOutcome readNumber() {
    const unsigned char* start = p_;
    const bool negative = *p_ == '-';
    if (negative) ++p_;
    if (p_ == end_) return JsonReadOutcome::invalid;
    if (*p_ == '0') {
      ++p_;
    } else if (*p_ >= '1' && *p_ <= '9') {
      skipDigits();
    } else {
      return JsonReadOutcome::invalid;
    }
    bool integral = true;
    if (p_ != end_ && *p_ == '.') {
      ++p_;
      if (!digitFollows()) return JsonReadOutcome::invalid;
      skipDigits();
      integral = false;
    }
    if (p_ != end_ && (*p_ == 'e' || *p_ == 'E')) {
      ++p_;
      if (p_ != end_ && (*p_ == '+' || *p_ == '-')) ++p_;
      if (!digitFollows()) return JsonReadOutcome::invalid;
      skipDigits();
      integral = false;
    }
    const char* first = reinterpret_cast<const char*>(start);
    const char* last = reinterpret_cast<const char*>(p_);
    if (integral) {
      // An integer too large for 64 bits is read as a double, as nlohmann does.
      if (negative) {
        std::int64_t value = 0;
        if (std::from_chars(first, last, value).ec == std::errc())
          return handler_.integer(value) ? JsonReadOutcome::complete : JsonReadOutcome::stopped;
      } else {
        std::uint64_t value = 0;
        if (std::from_chars(first, last, value).ec == std::errc())
          return handler_.unsignedInteger(value) ? JsonReadOutcome::complete : JsonReadOutcome::stopped;
      }
    }
    // std::from_chars reads the C locale's decimal point whatever the process
    // locale is (a Qt program runs under the user's LC_NUMERIC).
    double value = 0;
    const auto [rest, error] = std::from_chars(first, last, value);
    if (error == std::errc::result_out_of_range) {
      if (beyondDoubleRange(first, last)) return JsonReadOutcome::invalid;
      value = 0;
    } else if (error != std::errc() || rest != last) {
      return JsonReadOutcome::invalid;
    }
    return handler_.floating(value) ? JsonReadOutcome::complete : JsonReadOutcome::stopped;
  }

  bool digitFollows() const { return p_ != end_ && *p_ >= '0' && *p_ <= '9'; }
  void skipDigits() {
    while (p_ != end_ && *p_ >= '0' && *p_ <= '9') ++p_;
  }

  const unsigned char* p_;
  const unsigned char* const end_;
  Handler& handler_;
  std::string buffer_;  // the string or key being read, reused throughout
};

}  // namespace json_events_detail

template <class Handler>
JsonReadOutcome readJsonEvents(std::string_view text, Handler& handler) {
  return json_events_detail::EventReader<Handler>(text, handler).read();
}

}  // namespace orrery
