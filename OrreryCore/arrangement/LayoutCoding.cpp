// The JSON coding of Layout. One decoder reads both the arrangement file,
// parsed by nlohmann's SAX interface because it is read at every start and a
// JSON tree of ten thousand items costs several times more, and the
// arrangement inside records that are already a JSON tree, walked into the
// same decoder; a direct writer produces the file after every edit.
#include <algorithm>

#include <nlohmann/json.hpp>

#include "OrreryCore/arrangement/Layout.h"

namespace orrery {

using nlohmann::json;

// --- Writing ------------------------------------------------------------------

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

// --- Reading ------------------------------------------------------------------

namespace {

// Turns the events of a JSON document into a Layout: every key required,
// extra keys skipped, an item object with exactly one known key, and a
// repeated key counting once, its last value winning, as in a JSON tree
// (which keeps only the last).
//
// Because a later value of the same key replaces an earlier one, a value that
// cannot be decoded does not end decoding at once: its error is held against
// the key in the innermost object being read, the rest of the value is
// skipped, and the key's next value (if any) clears it. An object that ends
// with an error still held is itself a bad value of its parent's key, up to
// the document, where the error becomes the result.
class LayoutDecoder final {
 public:
  // `itemsHint` is reserved for the items array when it opens.
  explicit LayoutDecoder(std::size_t itemsHint) : itemsHint_(itemsHint) { frames_.reserve(16); }

  Expected<Layout, DecodingError> result() && {
    if (error_) return Unexpected(std::move(*error_));
    return std::move(layout_);
  }

  // nlohmann's SAX events; each returns false to stop reading.
  bool null() { return scalar(Type::null, nullptr); }
  bool boolean(bool) { return scalar(Type::boolean, nullptr); }
  bool number_integer(std::int64_t value) { return number(static_cast<double>(value), value, true); }
  bool number_unsigned(std::uint64_t value) {
    if (value > static_cast<std::uint64_t>(INT64_MAX)) {
      if (slot() == Slot::version)
        return fail(DecodingError::Kind::dataCorrupted, "version", "Number does not fit in Int64.");
      return scalar(Type::number, nullptr);
    }
    return number(static_cast<double>(value), static_cast<std::int64_t>(value), true);
  }
  bool number_float(double value, const std::string&) { return number(value, 0, false); }
  bool string(std::string& value) { return scalar(Type::string, &value); }
  bool binary(json::binary_t&) { return scalar(Type::other, nullptr); }

  bool start_object(std::size_t) {
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

  bool end_object() {
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

  bool start_array(std::size_t) {
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

  bool end_array() {
    frames_.pop_back();
    advance();
    return true;
  }

  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) {
    error_ = DecodingError{DecodingError::Kind::dataCorrupted, "", "The given data was not valid JSON."};
    return false;
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
  enum class Type { null, boolean, number, string, object, array, other };

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

  std::size_t itemsHint_;
  Layout layout_;
  std::vector<Frame> frames_;
  // Items do not nest, nor do folders: the one being read is kept here
  // rather than in its frame.
  std::optional<LayoutItem> item_;
  Folder folder_;
  std::string folderID_;
  std::optional<DecodingError> error_;
};

// Hands a JSON tree to the decoder as events, the ones the parser would give
// for the tree written out. With its own stack rather than recursion: a tree
// is as deep as the record it was parsed from, whoever wrote that.
void walk(const json& root, LayoutDecoder& decoder) {
  struct Open {
    const json* container;
    json::const_iterator next;
  };
  std::vector<Open> open;
  std::string text;  // the events take strings by reference and may move from them
  const json* value = &root;
  for (;;) {
    bool go = true;
    switch (value->type()) {
      case json::value_t::object:
        go = decoder.start_object(value->size());
        open.push_back({value, value->cbegin()});
        break;
      case json::value_t::array:
        go = decoder.start_array(value->size());
        open.push_back({value, value->cbegin()});
        break;
      case json::value_t::string:
        text = value->get_ref<const std::string&>();
        go = decoder.string(text);
        break;
      case json::value_t::boolean:
        go = decoder.boolean(value->get<bool>());
        break;
      case json::value_t::number_integer:
        go = decoder.number_integer(value->get<std::int64_t>());
        break;
      case json::value_t::number_unsigned:
        go = decoder.number_unsigned(value->get<std::uint64_t>());
        break;
      case json::value_t::number_float:
        text.clear();
        go = decoder.number_float(value->get<double>(), text);
        break;
      case json::value_t::binary:
        go = decoder.binary(const_cast<json::binary_t&>(value->get_binary()));
        break;
      case json::value_t::null:
      case json::value_t::discarded:
        go = decoder.null();
        break;
    }
    if (!go) return;
    // The next value: the next member of the innermost open container, after
    // closing every container that has none left.
    for (;;) {
      if (open.empty()) return;
      Open& top = open.back();
      const bool isObject = top.container->is_object();
      if (top.next == top.container->cend()) {
        open.pop_back();
        if (!(isObject ? decoder.end_object() : decoder.end_array())) return;
        continue;
      }
      if (isObject) {
        text = top.next.key();
        if (!decoder.key(text)) return;
      }
      value = &*top.next;
      ++top.next;
      break;
    }
  }
}

}  // namespace

Expected<Layout, DecodingError> Layout::fromJson(const nlohmann::json& tree) {
  LayoutDecoder decoder(0);
  walk(tree, decoder);
  return std::move(decoder).result();
}

Expected<Layout, DecodingError> Layout::decode(std::string_view bytes) {
  // The item count is guessed from the file's size (an item takes about 50
  // bytes as the file is written) so the array rarely grows while being read;
  // capped so that a huge hostile file does not reserve more than it holds.
  LayoutDecoder decoder(std::min<std::size_t>(bytes.size() / 48, 1 << 16));
  // A syntax error, or the decoder giving up, ends the parse; either way the
  // decoder holds the reason.
  json::sax_parse(bytes.begin(), bytes.end(), &decoder);
  return std::move(decoder).result();
}

}  // namespace orrery
