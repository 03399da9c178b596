// GLibDesktopEntry: the [Desktop Entry] group of one desktop entry as GLib's
// key-file parser reads it, behind the same questions DesktopEntryFile
// answers.
//
// The format reads entries with DesktopEntryFile and comes here for the
// files that reader leaves to GLib; the tests hold the two to the same
// answers. Each question is the GLib call of the same name, asked only
// after g_key_file_has_key(), since GLib builds a translated error message
// for every missing key even when nobody wants it.
//
// Thread rules: one object per thread.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

typedef struct _GKeyFile GKeyFile;

namespace orrery::platform {

class GLibDesktopEntry {
 public:
  // Parses `bytes`; a file GLib rejects answers every question negatively.
  explicit GLibDesktopEntry(std::string_view bytes);

  bool loaded() const { return loaded_; }
  bool startsWithDesktopEntry() const;
  bool has(std::string_view key) const;
  std::optional<std::string> string(std::string_view key) const;
  bool boolean(std::string_view key) const;
  std::optional<std::vector<std::string>> list(std::string_view key) const;

 private:
  struct Unref {
    void operator()(GKeyFile* file) const;
  };
  std::unique_ptr<GKeyFile, Unref> file_;
  bool loaded_ = false;
};

}  // namespace orrery::platform
