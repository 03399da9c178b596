#include "OrreryCore/base/JsonEvents.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

#include <nlohmann/json.hpp>

namespace orrery {
namespace {

using nlohmann::json;

// Rebuilds a JSON tree from the events, so that the reader can be held to
// nlohmann's parser on both the verdict and the value.
class TreeBuilder {
 public:
  bool null() { return put(nullptr); }
  bool boolean(bool value) { return put(value); }
  bool integer(std::int64_t value) { return put(value); }
  bool unsignedInteger(std::uint64_t value) { return put(value); }
  bool floating(double value) { return put(value); }
  bool string(std::string& value) { return put(std::move(value)); }
  bool key(std::string& name) {
    key_ = std::move(name);
    return true;
  }
  bool startObject() { return open(json::object()); }
  bool startArray() { return open(json::array()); }
  bool endObject() { return close(); }
  bool endArray() { return close(); }

  json root;

 private:
  bool put(json value) {
    if (open_.empty()) {
      root = std::move(value);
    } else if (open_.back()->is_object()) {
      (*open_.back())[key_] = std::move(value);  // a repeated key: the last value wins
    } else {
      open_.back()->push_back(std::move(value));
    }
    return true;
  }
  bool open(json container) {
    put(std::move(container));
    json* placed = open_.empty()               ? &root
                   : open_.back()->is_object() ? &(*open_.back())[key_]
                                               : &open_.back()->back();
    open_.push_back(placed);
    return true;
  }
  bool close() {
    open_.pop_back();
    return true;
  }

  std::vector<json*> open_;
  std::string key_;
};

// The reader's verdict and value against nlohmann's strict parser.
void expectSameAsNlohmann(const std::string& text) {
  TreeBuilder builder;
  const JsonReadOutcome outcome = readJsonEvents(text, builder);
  ASSERT_NE(outcome, JsonReadOutcome::stopped);
  const json tree = json::parse(text, nullptr, /*allow_exceptions=*/false);
  ASSERT_EQ(outcome == JsonReadOutcome::complete, !tree.is_discarded()) << testing::PrintToString(text);
  if (outcome == JsonReadOutcome::complete) {
    EXPECT_EQ(builder.root, tree) << testing::PrintToString(text);
  }
}

TEST(JsonEvents, AgreesWithNlohmannOnHandMadeDocuments) {
  const std::vector<std::string> documents = {
      // Shapes and whitespace.
      "{}", "[]", " \t\r\n[ 1 , 2 ]\n", "{\"a\":{\"b\":[[],{}]}}", "{\"a\":1,\"a\":2}", "\"x\"", "true", "",
      "[", "]", "{\"a\"}", "{\"a\":}", "{\"a\" 1}", "{,}", "[1,]", "{\"a\":1,}", "[1 2]", "[1]x", "{1:2}",
      "[\f1]", "nul", "truex", "[True]", std::string("[1]\0", 4), std::string("1\0", 2), std::string("\0", 1),
      std::string("[\"a\0b\"]", 7), "/*c*/[]", "[]//",
      // Byte-order mark: skipped at the start only, and only whole.
      "\xEF\xBB\xBF[1]", "\xEF\xBB[1]", "[\xEF\xBB\xBF]", "\xEF\xBB\xBF",
      // Numbers.
      "0", "-0", "-", "01", "-01", "1.", ".5", "1e+", "1E-2", "1.25e+3", "+1", "1e400", "1e-400", "4.9e-325",
      "1.7976931348623157e308", "1.7976931348623159e308", "0.000e999", "0.0001e310", "0.0001e300",
      "18446744073709551615", "18446744073709551616", "9223372036854775807", "-9223372036854775808",
      "-9223372036854775809", "123456789012345678901234567890", "NaN", "1e99999999999999999999",
      "1e-99999999999999999999", std::string(400, '9'),
      // Strings: escapes, surrogates, control characters, UTF-8.
      R"(["\"\\\/\b\f\n\r\t"])", R"(["\u00e9\u0000\uFFFF"])", R"(["\ud83d\ude00"])", R"(["\ud83d"])",
      R"(["\ud83d\u0041"])", R"(["\ude00"])", R"(["\u12"])", R"(["\u12G4"])", R"(["\x"])", "[\"tab\there\"]",
      "[\"\x1F\"]", "[\"\x7F\"]", "[\"caf\xC3\xA9\"]", "[\"\xC3\"]", "[\"\xC0\xAF\"]", "[\"\xE0\x80\xAF\"]",
      "[\"\xED\xA0\x80\"]", "[\"\xF4\x90\x80\x80\"]", "[\"\xF0\x9F\x98\x80\"]", "[\"\xFF\"]", "[\"\x80\"]",
      "[\"abc", "[\"abc\\",
      // Deep nesting is read without recursion.
      std::string(5000, '[') + std::string(5000, ']'), std::string(5000, '[') + std::string(4999, ']')};
  for (const auto& text : documents) expectSameAsNlohmann(text);
}

TEST(JsonEvents, AgreesWithNlohmannOnDamagedDocuments) {
  const std::vector<std::string> seeds = {
      R"({"hidden":["a.desktop"],"items":[{"app":{"_0":"org.gnome.Files.desktop"}},{"folder":{"_0":)"
      R"({"appIDs":["x","y\u00e9"],"id":"6F1E","name":"Caf\u00e9 \ud83d\ude00"}}}],"version":1})",
      "[1, -2.5e3, true, false, null, \"\xC3\xA9\\n\", {\"k\": [0.5, 18446744073709551616]}]"};
  const std::string noise = "{}[]\":,\\u0123456789eE+-.tfn\x00\x1F\x80\xBF\xC3\xED\xEF\xF4\xFF ";
  std::mt19937 random(20261122);
  for (int round = 0; round < 20000; ++round) {
    std::string text = seeds[random() % seeds.size()];
    const int edits = 1 + static_cast<int>(random() % 4);
    for (int i = 0; i < edits && !text.empty(); ++i) {
      const std::size_t at = random() % text.size();
      const char byte = noise[random() % noise.size()];
      switch (random() % 4) {
        case 0:
          text[at] = byte;
          break;
        case 1:
          text.insert(at, 1, byte);
          break;
        case 2:
          text.erase(at, 1);
          break;
        default:
          text.resize(at);
          break;
      }
    }
    expectSameAsNlohmann(text);
    if (HasFatalFailure()) return;
  }
}

// Stops the moment the handler says so, reporting nothing more.
TEST(JsonEvents, HandlerCanStopReading) {
  struct StopAtSecondString : TreeBuilder {
    int strings = 0;
    bool string(std::string& value) { return ++strings < 2 && TreeBuilder::string(value); }
  } handler;
  EXPECT_EQ(readJsonEvents(R"(["a","b",{)", handler), JsonReadOutcome::stopped);
  EXPECT_EQ(handler.root, json::array({"a"}));
}

}  // namespace
}  // namespace orrery
