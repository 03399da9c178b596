// The JSON coding of Layout: the DOM form for records that embed an
// arrangement, and a streaming decoder plus a direct writer for the
// arrangement file, which is read at every start and written after every edit.
#include <algorithm>

#include <nlohmann/json.hpp>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/base/JsonEvents.h"

namespace orrery {

// --- JSON ---------------------------------------------------------------------

namespace {

using nlohmann::json;

DecodingError failure(DecodingError::Kind kind, std::string path, std::string message) {
  return DecodingError{kind, std::move(path), std::move(message)};
}

// The value under a required key, or why there is none.
Expected<const json*, DecodingError> required(const json& object, const char* key, const std::string& path,
                                              json::value_t type) {
  const auto found = object.find(key);
  const std::string where = path.empty() ? key : path + "." + key;
  if (found == object.end())
    return Unexpected(failure(DecodingError::Kind::keyNotFound, where,
                              std::string("No value associated with key \"") + key + "\"."));
  if (found->is_null())
    return Unexpected(
        failure(DecodingError::Kind::valueNotFound, where, "Expected a value but found null instead."));
  const bool typeMatches = type == json::value_t::number_integer ? found->is_number() : found->type() == type;
  if (!typeMatches)
    return Unexpected(failure(DecodingError::Kind::typeMismatch, where,
                              std::string("Expected ") + json(type).type_name() + " but found " +
                                  found->type_name() + " instead."));
  return &*found;
}

Expected<std::vector<std::string>, DecodingError> stringArray(const json& array, const std::string& path) {
  std::vector<std::string> out;
  out.reserve(array.size());
  for (std::size_t i = 0; i < array.size(); ++i) {
    if (!array[i].is_string())
      return Unexpected(
          failure(DecodingError::Kind::typeMismatch, path + "[" + std::to_string(i) + "]",
                  "Expected to decode String but found " + std::string(array[i].type_name()) + " instead."));
    out.push_back(array[i].get<std::string>());
  }
  return out;
}

// {"_0": payload}: the single associated value of an enumeration case.
Expected<const json*, DecodingError> caseValue(const json& wrapper, const std::string& path,
                                               json::value_t type) {
  if (!wrapper.is_object())
    return Unexpected(
        failure(DecodingError::Kind::typeMismatch, path, "Expected to decode a keyed container."));
  return required(wrapper, "_0", path, type);
}

Expected<Folder, DecodingError> decodeFolder(const json& object, const std::string& path) {
  const auto id = required(object, "id", path, json::value_t::string);
  if (!id) return Unexpected(id.error());
  const auto name = required(object, "name", path, json::value_t::string);
  if (!name) return Unexpected(name.error());
  const auto appIDs = required(object, "appIDs", path, json::value_t::array);
  if (!appIDs) return Unexpected(appIDs.error());

  const auto uuid = Uuid::parse((*id)->get_ref<const std::string&>());
  if (!uuid)
    return Unexpected(failure(DecodingError::Kind::dataCorrupted, path + ".id",
                              "Attempted to decode UUID from invalid UUID string."));
  auto members = stringArray(**appIDs, path + ".appIDs");
  if (!members) return Unexpected(members.error());
  return Folder{*uuid, (*name)->get<std::string>(), std::move(*members)};
}

Expected<LayoutItem, DecodingError> decodeItem(const json& object, const std::string& path) {
  if (!object.is_object())
    return Unexpected(
        failure(DecodingError::Kind::typeMismatch, path, "Expected to decode a keyed container."));
  if (object.size() != 1)
    return Unexpected(
        failure(DecodingError::Kind::typeMismatch, path, "Invalid number of keys found, expected one."));
  // Through the object's own iterator: items() is a temporary, and a
  // reference into what its begin() returns would dangle.
  const auto entry = object.begin();
  const std::string& key = entry.key();
  const json& wrapper = entry.value();
  if (key == "app") {
    const auto id = caseValue(wrapper, path + ".app", json::value_t::string);
    if (!id) return Unexpected(id.error());
    return LayoutItem::app((*id)->get<std::string>());
  }
  if (key == "folder") {
    const auto folder = caseValue(wrapper, path + ".folder", json::value_t::object);
    if (!folder) return Unexpected(folder.error());
    auto decoded = decodeFolder(**folder, path + ".folder._0");
    if (!decoded) return Unexpected(decoded.error());
    return LayoutItem::folder(std::move(*decoded));
  }
  return Unexpected(failure(DecodingError::Kind::dataCorrupted, path, "Unknown item key \"" + key + "\"."));
}

}  // namespace

nlohmann::json Layout::toJson() const {
  json encodedItems = json::array();
  for (const auto& item : items) {
    if (const auto* id = item.appID()) {
      encodedItems.push_back({{"app", {{"_0", *id}}}});
    } else {
      const Folder& folder = *item.asFolder();
      encodedItems.push_back(
          {{"folder",
            {{"_0", {{"id", folder.id.text()}, {"name", folder.name}, {"appIDs", folder.appIDs}}}}}});
    }
  }
  return json{{"version", version}, {"items", std::move(encodedItems)}, {"hidden", json(hidden)}};
}

Expected<Layout, DecodingError> Layout::fromJson(const nlohmann::json& object) {
  if (!object.is_object())
    return Unexpected(
        failure(DecodingError::Kind::typeMismatch, "", "Expected to decode a keyed container."));
  const auto versionValue = required(object, "version", "", json::value_t::number_integer);
  if (!versionValue) return Unexpected(versionValue.error());
  const auto itemsValue = required(object, "items", "", json::value_t::array);
  if (!itemsValue) return Unexpected(itemsValue.error());
  const auto hiddenValue = required(object, "hidden", "", json::value_t::array);
  if (!hiddenValue) return Unexpected(hiddenValue.error());

  Layout layout;
  const json& number = **versionValue;
  if (number.is_number_unsigned() && number.get<std::uint64_t>() > static_cast<std::uint64_t>(INT64_MAX))
    return Unexpected(
        failure(DecodingError::Kind::dataCorrupted, "version", "Number does not fit in Int64."));
  if (number.is_number_float()) {
    const double value = number.get<double>();
    // The range check comes first: converting a double outside Int64 is undefined.
    if (!(value < 9.2e18 && value > -9.2e18) ||
        value != static_cast<double>(static_cast<std::int64_t>(value)))
      return Unexpected(
          failure(DecodingError::Kind::dataCorrupted, "version", "Number does not fit in Int64."));
    layout.version = static_cast<std::int64_t>(value);
  } else {
    layout.version = number.get<std::int64_t>();
  }

  const json& encodedItems = **itemsValue;
  layout.items.reserve(encodedItems.size());
  for (std::size_t i = 0; i < encodedItems.size(); ++i) {
    auto item = decodeItem(encodedItems[i], "items[" + std::to_string(i) + "]");
    if (!item) return Unexpected(item.error());
    layout.items.push_back(std::move(*item));
  }
  auto hiddenIDs = stringArray(**hiddenValue, "hidden");
  if (!hiddenIDs) return Unexpected(hiddenIDs.error());
  layout.hidden.insert(std::make_move_iterator(hiddenIDs->begin()),
                       std::make_move_iterator(hiddenIDs->end()));
  return layout;
}

// --- The arrangement file's fast paths -------------------------------------------

namespace {

// Appends `text` as a JSON string exactly as nlohmann's dump() writes it, so
// encoded() and toJson().dump(2) give the same bytes.
void appendString(std::string& out, std::string_view text) {
  out.push_back('"');
  static constexpr char hex[] = "0123456789abcdef";
  const std::size_t start = out.size();
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\b':
        out += "\\b";
        break;
      case '\f':
        out += "\\f";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (c < 0x20) {
          out += "\\u00";
          out.push_back(hex[c >> 4]);
          out.push_back(hex[c & 0xF]);
        } else if (c >= 0x80) {
          // Leave anything beyond ASCII to the library, which validates the
          // UTF-8 and replaces broken sequences instead of failing.
          out.resize(start - 1);
          out += json(std::string(text)).dump(-1, ' ', false, json::error_handler_t::replace);
          return;
        } else {
          out.push_back(static_cast<char>(c));
        }
    }
  }
  out.push_back('"');
}

void newline(std::string& out, int depth) {
  out.push_back('\n');
  out.append(static_cast<std::size_t>(depth) * 2, ' ');
}

void appendStringArray(std::string& out, const auto& strings, int depth) {
  if (std::empty(strings)) {
    out += "[]";
    return;
  }
  out.push_back('[');
  bool first = true;
  for (const auto& value : strings) {
    if (!first) out.push_back(',');
    first = false;
    newline(out, depth + 1);
    appendString(out, value);
  }
  newline(out, depth);
  out.push_back(']');
}

}  // namespace

std::string Layout::encoded() const {
  // Written directly rather than through a DOM: the file is saved after every
  // edit and a DOM of ten thousand items costs more than the disk write.
  // Keys in sorted order, two-space indent, the layout nlohmann's dump(2) has.
  std::string out;
  out.reserve(64 + items.size() * 64);
  out += "{\n  \"hidden\": ";
  appendStringArray(out, hidden, 1);
  out += ",\n  \"items\": ";
  if (items.empty()) {
    out += "[]";
  } else {
    out.push_back('[');
    bool first = true;
    for (const auto& item : items) {
      if (!first) out.push_back(',');
      first = false;
      if (const auto* id = item.appID()) {
        out += "\n    {\n      \"app\": {\n        \"_0\": ";
        appendString(out, *id);
        out += "\n      }\n    }";
      } else {
        const Folder& folder = *item.asFolder();
        out += "\n    {\n      \"folder\": {\n        \"_0\": {\n          \"appIDs\": ";
        appendStringArray(out, folder.appIDs, 5);
        out += ",\n          \"id\": \"" + folder.id.text() + "\",\n          \"name\": ";
        appendString(out, folder.name);
        out += "\n        }\n      }\n    }";
      }
    }
    out += "\n  ]";
  }
  out += ",\n  \"version\": " + std::to_string(version) + "\n}";
  return out;
}

namespace {

// Streams the arrangement file into a Layout without building a DOM. It keeps
// fromJson()'s rules: every key required, extra keys skipped, an item object
// with exactly one known key, and — like the DOM — a repeated key counts once,
// its last value winning. Tests hold the two decoders to the same results.
//
// Because a later value of the same key replaces an earlier one, a value that
// cannot be decoded does not end decoding at once: its error is held against
// the key in the innermost object being read, the rest of the value is
// skipped, and the key's next value (if any) clears it. An object that ends
// with an error still held is itself a bad value of its parent's key, up to
// the document, where the error becomes the result.
class StreamingDecoder final {
 public:
  // The item count is guessed from the file's size (an item takes about 50
  // bytes as the file is written) so the array rarely grows while being read;
  // capped so that a huge hostile file does not reserve more than it holds.
  explicit StreamingDecoder(std::size_t bytes) : itemsHint_(std::min<std::size_t>(bytes / 48, 1 << 16)) {
    frames_.reserve(16);
  }

  Expected<Layout, DecodingError> result() && {
    if (error_) return Unexpected(std::move(*error_));
    return std::move(layout_);
  }

  // The events of readJsonEvents().
  bool null() { return scalar(Type::null, nullptr); }
  bool boolean(bool) { return scalar(Type::boolean, nullptr); }
  bool integer(std::int64_t value) { return number(static_cast<double>(value), value, true); }
  bool unsignedInteger(std::uint64_t value) {
    if (value > static_cast<std::uint64_t>(INT64_MAX)) {
      if (slot() == Slot::version)
        return fail(DecodingError::Kind::dataCorrupted, "version", "Number does not fit in Int64.");
      return scalar(Type::number, nullptr);
    }
    return number(static_cast<double>(value), static_cast<std::int64_t>(value), true);
  }
  bool floating(double value) { return number(value, 0, false); }
  bool string(std::string& value) { return scalar(Type::string, &value); }

  bool startObject() {
    const Slot s = slot();
    Kind kind = Kind::skipped;
    switch (s) {
      case Slot::ignored:
        break;
      case Slot::document:
        kind = Kind::root;
        break;
      case Slot::item:
        kind = Kind::item;
        item_.reset();
        break;
      case Slot::appCase:
        kind = Kind::appCase;
        break;
      case Slot::folderCase:
        kind = Kind::folderCase;
        break;
      case Slot::folder:
        kind = Kind::folder;
        folder_ = Folder();
        folderID_.clear();
        break;
      default:
        // The value's contents are skipped once its error is held.
        if (!mismatch(s, Type::object)) return false;
        frames_.emplace_back();
        return true;
    }
    markSeen(s);
    frames_.emplace_back().kind = kind;
    return true;
  }

  bool key(std::string& name) {
    Frame& frame = frames_.back();
    if (frame.kind == Kind::item) {
      if (frame.firstKey.empty() && frame.keys == 0) {
        frame.firstKey = name;
        frame.keys = 1;
      } else if (name != frame.firstKey) {
        frame.keys = 2;  // finish() rejects the item
      }
    }
    // A repeated key: its new value replaces the old one, errors included.
    std::erase_if(frame.held, [&](const auto& entry) { return entry.first == name; });
    frame.key = std::move(name);
    return true;
  }

  bool endObject() {
    Frame& frame = frames_.back();
    // An item's own shape is judged before what its values held.
    std::optional<DecodingError> error;
    if (frame.held.empty() || (frame.kind == Kind::item && frame.keys != 1)) {
      error = finish(frame);
    } else {
      error = std::move(frame.held.front().second);
    }
    frames_.pop_back();
    // A bad object is a bad value of the key it stands under.
    if (error) return hold(std::move(*error));
    advance();
    return true;
  }

  bool startArray() {
    const Slot s = slot();
    Kind kind = Kind::skipped;
    switch (s) {
      case Slot::ignored:
        break;
      case Slot::items:
        kind = Kind::items;
        layout_.items.clear();
        layout_.items.reserve(itemsHint_);
        break;
      case Slot::hidden:
        kind = Kind::hidden;
        layout_.hidden.clear();
        break;
      case Slot::folderAppIDs:
        kind = Kind::appIDs;
        folder_.appIDs.clear();
        break;
      default:
        // The value's contents are skipped once its error is held.
        if (!mismatch(s, Type::array)) return false;
        frames_.emplace_back();
        return true;
    }
    markSeen(s);
    frames_.emplace_back().kind = kind;
    return true;
  }

  bool endArray() {
    frames_.pop_back();
    advance();
    return true;
  }

 private:
  enum class Kind { root, items, hidden, item, appCase, folderCase, folder, appIDs, skipped };
  enum class Slot {
    document,
    version,
    items,
    hidden,
    item,
    hiddenEntry,
    appCase,
    folderCase,
    appID,
    folder,
    folderID,
    folderName,
    folderAppIDs,
    folderAppID,
    ignored
  };
  enum class Type { null, boolean, number, string, object, array };

  struct Frame {
    Kind kind = Kind::skipped;
    std::string key;        // the object key whose value comes next
    std::size_t index = 0;  // next element of an array
    int seen = 0;           // required keys met so far, one bit each
    int keys = 0;           // distinct keys of an item object
    std::string firstKey;
    // Errors of values read under a key, until the key comes again.
    std::vector<std::pair<std::string, DecodingError>> held;
  };

  // What the next value is, given where the decoder stands.
  Slot slot() const {
    if (frames_.empty()) return Slot::document;
    const Frame& frame = frames_.back();
    switch (frame.kind) {
      case Kind::root:
        if (frame.key == "version") return Slot::version;
        if (frame.key == "items") return Slot::items;
        if (frame.key == "hidden") return Slot::hidden;
        return Slot::ignored;
      case Kind::items:
        return Slot::item;
      case Kind::hidden:
        return Slot::hiddenEntry;
      case Kind::item:
        if (frame.key == "app") return Slot::appCase;
        if (frame.key == "folder") return Slot::folderCase;
        return Slot::ignored;
      case Kind::appCase:
        return frame.key == "_0" ? Slot::appID : Slot::ignored;
      case Kind::folderCase:
        return frame.key == "_0" ? Slot::folder : Slot::ignored;
      case Kind::folder:
        if (frame.key == "id") return Slot::folderID;
        if (frame.key == "name") return Slot::folderName;
        if (frame.key == "appIDs") return Slot::folderAppIDs;
        return Slot::ignored;
      case Kind::appIDs:
        return Slot::folderAppID;
      case Kind::skipped:
        return Slot::ignored;
    }
    return Slot::ignored;
  }

  // Checks a finished object and hands its value to the one it belongs to;
  // the reason when the object cannot be used.
  std::optional<DecodingError> finish(Frame& frame) {
    switch (frame.kind) {
      case Kind::root:
        for (const auto& [bit, key] : {std::pair{1, "version"}, {2, "items"}, {4, "hidden"}})
          if (!(frame.seen & bit)) return missing(path(), key);
        return std::nullopt;
      case Kind::item:
        if (frame.keys != 1)
          return DecodingError{DecodingError::Kind::typeMismatch, path(),
                               "Invalid number of keys found, expected one."};
        if (!item_)
          return DecodingError{DecodingError::Kind::dataCorrupted, path(),
                               "Unknown item key \"" + frame.firstKey + "\"."};
        layout_.items.push_back(std::move(*item_));
        return std::nullopt;
      case Kind::appCase:
      case Kind::folderCase:
        if (!(frame.seen & 1)) return missing(path(), "_0");
        return std::nullopt;
      case Kind::folder: {
        for (const auto& [bit, key] : {std::pair{1, "id"}, {2, "name"}, {4, "appIDs"}})
          if (!(frame.seen & bit)) return missing(path(), key);
        const auto id = Uuid::parse(folderID_);
        if (!id)
          return DecodingError{DecodingError::Kind::dataCorrupted, path() + ".id",
                               "Attempted to decode UUID from invalid UUID string."};
        folder_.id = *id;
        item_ = LayoutItem::folder(std::move(folder_));
        return std::nullopt;
      }
      default:
        return std::nullopt;
    }
  }

  // Where the value about to be read sits, e.g. "items[3].folder._0";
  // built only for error messages.
  std::string childPath() const { return pathTo(frames_.size()); }
  // Where the innermost open container sits.
  std::string path() const { return pathTo(frames_.size() - 1); }

  std::string pathTo(std::size_t depth) const {
    std::string out;
    for (std::size_t i = 0; i < depth; ++i) {
      const Frame& frame = frames_[i];
      if (frame.kind == Kind::items || frame.kind == Kind::hidden || frame.kind == Kind::appIDs) {
        out += "[" + std::to_string(frame.index) + "]";
      } else if (frame.kind != Kind::skipped || !frame.key.empty()) {
        if (!out.empty()) out += '.';
        out += frame.key;
      }
    }
    return out;
  }

  void markSeen(Slot s) {
    if (frames_.empty()) return;  // the document itself
    Frame& frame = frames_.back();
    switch (s) {
      case Slot::version:
      case Slot::appID:
      case Slot::folder:
      case Slot::folderID:
        frame.seen |= 1;
        break;
      case Slot::items:
      case Slot::folderName:
        frame.seen |= 2;
        break;
      case Slot::hidden:
      case Slot::folderAppIDs:
        frame.seen |= 4;
        break;
      default:
        break;
    }
  }

  // After a value inside an array, the next one has the next index.
  void advance() {
    if (!frames_.empty()) ++frames_.back().index;
  }

  bool number(double asDouble, std::int64_t asInteger, bool integral) {
    const Slot s = slot();
    if (s != Slot::version) return scalar(Type::number, nullptr);
    if (!integral) {
      // The range check comes first: converting a double outside Int64 is undefined.
      if (!(asDouble < 9.2e18 && asDouble > -9.2e18) ||
          asDouble != static_cast<double>(static_cast<std::int64_t>(asDouble)))
        return fail(DecodingError::Kind::dataCorrupted, "version", "Number does not fit in Int64.");
      asInteger = static_cast<std::int64_t>(asDouble);
    }
    layout_.version = asInteger;
    markSeen(s);
    return true;
  }

  bool scalar(Type type, std::string* text) {
    const Slot s = slot();
    if (s == Slot::ignored) {
      advance();
      return true;
    }
    if (type == Type::null && s != Slot::document && s != Slot::item && s != Slot::hiddenEntry &&
        s != Slot::folderAppID)
      return fail(DecodingError::Kind::valueNotFound, childPath(),
                  "Expected a value but found null instead.");
    if (type != Type::string || !text) return mismatch(s, type);
    switch (s) {
      case Slot::hiddenEntry:
        layout_.hidden.insert(std::move(*text));
        break;
      case Slot::appID:
        item_ = LayoutItem::app(std::move(*text));
        break;
      case Slot::folderID:
        folderID_ = std::move(*text);
        break;
      case Slot::folderName:
        folder_.name = std::move(*text);
        break;
      case Slot::folderAppID:  // inside the appIDs array of the folder
        folder_.appIDs.push_back(std::move(*text));
        break;
      default:
        return mismatch(s, type);
    }
    markSeen(s);
    advance();
    return true;
  }

  bool mismatch(Slot, Type) {
    return fail(DecodingError::Kind::typeMismatch, childPath(), "Expected a value of another type.");
  }

  static DecodingError missing(const std::string& path, const char* key) {
    return DecodingError{DecodingError::Kind::keyNotFound, path.empty() ? key : path + "." + key,
                         std::string("No value associated with key \"") + key + "\"."};
  }

  // The value being read cannot be decoded.
  bool fail(DecodingError::Kind kind, std::string path, std::string message) {
    return hold(DecodingError{kind, std::move(path), std::move(message)});
  }

  // Holds the error against the key of the innermost open object and skips
  // the rest of the value; outside any object it ends decoding.
  bool hold(DecodingError error) {
    auto object = frames_.rbegin();
    while (object != frames_.rend() &&
           (object->kind == Kind::items || object->kind == Kind::hidden || object->kind == Kind::appIDs))
      ++object;
    if (object == frames_.rend()) {
      if (!error_) error_ = std::move(error);
      return false;
    }
    // Arrays opened under that key are skipped from here on.
    for (auto open = frames_.rbegin(); open != object; ++open) open->kind = Kind::skipped;
    if (std::none_of(object->held.begin(), object->held.end(),
                     [&](const auto& entry) { return entry.first == object->key; }))
      object->held.emplace_back(object->key, std::move(error));
    return true;
  }

  Layout layout_;
  std::vector<Frame> frames_;
  // Items do not nest, nor do folders: the one being read is kept here
  // rather than in its frame.
  std::size_t itemsHint_;
  std::optional<LayoutItem> item_;
  Folder folder_;
  std::string folderID_;
  std::optional<DecodingError> error_;
};

}  // namespace

Expected<Layout, DecodingError> Layout::decode(std::string_view bytes) {
  StreamingDecoder decoder(bytes.size());
  if (readJsonEvents(bytes, decoder) == JsonReadOutcome::invalid)
    return Unexpected(
        DecodingError{DecodingError::Kind::dataCorrupted, "", "The given data was not valid JSON."});
  return std::move(decoder).result();
}

}  // namespace orrery
