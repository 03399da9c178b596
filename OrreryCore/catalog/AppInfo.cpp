#include "OrreryCore/catalog/AppInfo.h"

#include <cmath>

#include <nlohmann/json.hpp>

namespace orrery {

namespace {

// RFC 3986 unreserved characters plus what a path segment may hold
// unencoded; everything else, '%' and bytes >= 0x80 included, is encoded.
bool keptInPath(unsigned char c) {
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) return true;
  switch (c) {
    case '-':
    case '.':
    case '_':
    case '~':
    case '/':
    case '!':
    case '$':
    case '&':
    case '\'':
    case '(':
    case ')':
    case '*':
    case '+':
    case ',':
    case ';':
    case '=':
    case ':':
    case '@':
      return true;
    default:
      return false;
  }
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

DecodingError error(DecodingError::Kind kind, std::string path, std::string message) {
  return DecodingError{kind, std::move(path), std::move(message)};
}

Expected<std::string, DecodingError> requiredString(const nlohmann::json& json, const char* key) {
  const auto found = json.find(key);
  if (found == json.end())
    return Unexpected(
        error(DecodingError::Kind::keyNotFound, key, std::string("No value for key \"") + key + "\"."));
  if (found->is_null())
    return Unexpected(error(DecodingError::Kind::valueNotFound, key, "Expected a string but found null."));
  if (!found->is_string())
    return Unexpected(error(DecodingError::Kind::typeMismatch, key, "Expected a string."));
  return found->get<std::string>();
}

}  // namespace

std::string fileURL(std::string_view path) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string url = "file://";
  url.reserve(url.size() + path.size());
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (keptInPath(byte)) {
      url += c;
    } else {
      url += '%';
      url += kHex[byte >> 4];
      url += kHex[byte & 0xF];
    }
  }
  return url;
}

std::optional<std::string> pathFromFileURL(std::string_view url) {
  constexpr std::string_view kScheme = "file://";
  if (url.size() < kScheme.size()) return std::nullopt;
  for (std::size_t i = 0; i < kScheme.size(); ++i) {
    // The scheme is case-insensitive; the rest is not.
    const char c = url[i];
    const char lower = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    if (lower != kScheme[i]) return std::nullopt;
  }
  url.remove_prefix(kScheme.size());
  if (url.starts_with("localhost/")) url.remove_prefix(std::string_view("localhost").size());
  if (!url.starts_with('/')) return std::nullopt;
  // A query or fragment has no place in a bundle's location.
  if (url.find_first_of("?#") != std::string_view::npos) return std::nullopt;

  std::string path;
  path.reserve(url.size());
  for (std::size_t i = 0; i < url.size(); ++i) {
    if (url[i] != '%') {
      path += url[i];
      continue;
    }
    if (i + 2 >= url.size()) return std::nullopt;
    const int high = hexValue(url[i + 1]);
    const int low = hexValue(url[i + 2]);
    if (high < 0 || low < 0) return std::nullopt;
    const auto byte = static_cast<char>(high * 16 + low);
    if (byte == '\0') return std::nullopt;
    path += byte;
    i += 2;
  }
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

nlohmann::json AppInfo::toJson() const {
  nlohmann::json json{{"id", id}, {"name", name}, {"url", fileURL(url)}};
  if (modified) json["modified"] = secondsSinceReferenceDate(*modified);
  return json;
}

Expected<AppInfo, DecodingError> AppInfo::fromJson(const nlohmann::json& json) {
  if (!json.is_object())
    return Unexpected(error(DecodingError::Kind::typeMismatch, "", "Expected an app record object."));
  auto id = requiredString(json, "id");
  if (!id) return Unexpected(id.error());
  auto name = requiredString(json, "name");
  if (!name) return Unexpected(name.error());
  auto url = requiredString(json, "url");
  if (!url) return Unexpected(url.error());
  auto path = pathFromFileURL(*url);
  if (!path)
    return Unexpected(error(DecodingError::Kind::dataCorrupted, "url", "Invalid file URL \"" + *url + "\"."));

  AppInfo app{std::move(*id), std::move(*name), std::move(*path), std::nullopt};
  const auto modified = json.find("modified");
  if (modified != json.end() && !modified->is_null()) {
    if (!modified->is_number())
      return Unexpected(
          error(DecodingError::Kind::typeMismatch, "modified", "Expected a number of seconds."));
    const double seconds = modified->get<double>();
    if (!std::isfinite(seconds))
      return Unexpected(error(DecodingError::Kind::dataCorrupted, "modified", "Date out of range."));
    app.modified = dateFromReferenceSeconds(seconds);
  }
  return app;
}

}  // namespace orrery
