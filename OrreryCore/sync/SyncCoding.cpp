#include "OrreryCore/sync/SyncCoding.h"

#include <string>

#include <nlohmann/json.hpp>

namespace orrery::syncCoding {

namespace {

using Kind = DecodingError::Kind;

DecodingError typeMismatch(std::string_view key, const char* expected, const nlohmann::json& found) {
  return DecodingError{
      Kind::typeMismatch, std::string(key),
      std::string("Expected to decode ") + expected + " but found " + found.type_name() + " instead."};
}

}  // namespace

Expected<const nlohmann::json*, DecodingError> object(const nlohmann::json& value, std::string_view path) {
  if (!value.is_object()) return Unexpected(typeMismatch(path, "a keyed container", value));
  return &value;
}

Expected<const nlohmann::json*, DecodingError> required(const nlohmann::json& object, std::string_view key) {
  const auto found = object.find(key);
  if (found == object.end())
    return Unexpected(DecodingError{Kind::keyNotFound, std::string(key),
                                    "No value associated with key \"" + std::string(key) + "\"."});
  if (found->is_null())
    return Unexpected(
        DecodingError{Kind::valueNotFound, std::string(key), "Expected a value but found null instead."});
  return &*found;
}

const nlohmann::json* optional(const nlohmann::json& object, std::string_view key) {
  const auto found = object.find(key);
  return found == object.end() || found->is_null() ? nullptr : &*found;
}

Expected<Uuid, DecodingError> uuid(const nlohmann::json& value, std::string_view key) {
  if (!value.is_string()) return Unexpected(typeMismatch(key, "a UUID string", value));
  if (const auto parsed = Uuid::parse(value.get_ref<const std::string&>())) return *parsed;
  return Unexpected(DecodingError{Kind::dataCorrupted, std::string(key),
                                  "Attempted to decode UUID from invalid UUID string."});
}

Expected<Date, DecodingError> date(const nlohmann::json& value, std::string_view key) {
  if (!value.is_number()) return Unexpected(typeMismatch(key, "a date (number of seconds)", value));
  return dateFromReferenceSeconds(value.get<double>());
}

nlohmann::json dateJson(Date date) { return secondsSinceReferenceDate(date); }

}  // namespace orrery::syncCoding
