#include "Orrery/platform/xdg/DesktopEntryFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <glib.h>

#include <random>
#include <string>
#include <vector>

#include "Orrery/platform/posix/QuotedBytes.h"
#include "Orrery/platform/xdg/DesktopEntryComparison.h"
#include "OrreryCore/testing/ScopedVariable.h"

namespace orrery::platform {
namespace {

using namespace std::string_literals;
using ::testing::IsEmpty;

// Names are read in Swiss German, then French, for the life of the object.
struct SwissGermanThenFrench {
  orrery::testing::ScopedVariable all{"LC_ALL", ""};
  orrery::testing::ScopedVariable language{"LANGUAGE", "de_CH.UTF-8:fr"};
};

// Whether the reader settled `text` itself; every answer it gave must be
// GLib's either way.
bool agreesWithGLib(const std::string& text) {
  const DesktopEntryComparison comparison = compareWithGLib(text);
  EXPECT_THAT(comparison.differences, IsEmpty()) << quotedBytes(text);
  return comparison.settled;
}

TEST(DesktopEntryFile, AnswersLikeGLibOnTrickyEntries) {
  const SwissGermanThenFrench languages;
  const std::vector<std::string> settled{
      "[Desktop Entry]\nType=Application\nName=Files\nName[de_CH]=Dateie\nName[fr]=\nExec=nautilus %U\n",
      // Blanks around keys, values and group lines; comments anywhere.
      "# first\n\n \t[Desktop Entry] \t\n\tType \t= \tApplication \t\n  # Name=Commented\nName = A\n",
      // The last of a repeated key wins, and a repeated group adds to the first.
      "[Desktop Entry]\nType=A\nType=Application\n[Desktop Action x]\nName=Other\n[Desktop "
      "Entry]\nName=Again",
      // Escapes: known ones, unknown ones, a trailing backslash; lists with
      // escaped separators, empty items and a bad escape.
      "[Desktop Entry]\nName=a\\sb\\\\c\\td\\nx\\ry\nExec=x\\q\\;y\nTryExec=end\\\nX-Other=a\\;b;c\\sd;\n"
      "OnlyShowIn=;;GNOME;;KDE\nNotShowIn=GNOME\\x;KDE\nHidden=1\nNoDisplay=0\n",
      "[Desktop Entry]\nOnlyShowIn=\nNotShowIn=;\nName=D\xc3\xa4tei\nName[fr]=\xff\xfe\nX-Other=a\xff;b\n",
      // Translations GLib drops, a key GLib does not check the case of.
      "[Desktop Entry]\nName[de]=x\nName[DE_ch.utf-8]=y\nName[sr@latin]=z\nEncoding=utf-8\n",
      "[Desktop Entry]\nType=Application\n[Other]\nEncoding=Latin-1\nX-Key=other group\n",
      // Files that do not start with the group.
      "",
      "Type=Application\n[Desktop Entry]\n",
  };
  for (const std::string& text : settled) EXPECT_TRUE(agreesWithGLib(text)) << ::testing::PrintToString(text);

  // What is left to GLib, in shapes the generated entries below never take
  // (they also hold carriage returns, bad keys, locales and encodings).
  const std::vector<std::string> leftToGLib{
      "[Desktop Entry]\nType=App\0lication\n"s,
      "[Desktop Entry]\nType=\vApplication\n",
      "\xef\xbb\xbf[Desktop Entry]\nType=Application\n",
      "\v[Desktop Entry]\n",
  };
  for (const std::string& text : leftToGLib)
    EXPECT_FALSE(agreesWithGLib(text)) << ::testing::PrintToString(text);

  DesktopEntryFile file(comparedDesktopEntryKeys());
  // An empty view without any data behind it, as a default-made one is.
  file.read(std::string_view());
  EXPECT_FALSE(file.needsGLib());
  EXPECT_FALSE(file.startsWithDesktopEntry());
  file.read("[Desktop Entry]\nHidden=True\n");
  EXPECT_FALSE(file.needsGLib());
  EXPECT_FALSE(file.boolean("Hidden"));
  EXPECT_TRUE(file.needsGLib());
}

// Entries put together from pieces that each stress one rule, many
// thousand times over with a fixed seed.
TEST(DesktopEntryFile, AnswersLikeGLibOnGeneratedEntries) {
  const SwissGermanThenFrench languages;
  const std::vector<std::string> groups{"[Desktop Entry]",      " [Desktop Entry]\t",
                                        "[Desktop Action new]", "[Desktop Entry] x",
                                        "[Desktop Entry",       "[]",
                                        "[ Desktop Entry]",     "[A[B]]",
                                        "[Gr\xc3\xbc\xc3\x9f]"};
  const std::vector<std::string> others{
      "", "   ", "# comment", "\t# Name=x", "#\xff", "no equals sign", "\xef\xbb\xbf# bom"};
  const std::vector<std::string> indents{"", "", "", " ", "\t", "\v"};
  const std::vector<std::string> keys{"Type",      "Name",        "Hidden", "NoDisplay", "OnlyShowIn",
                                      "NotShowIn", "TryExec",     "Exec",   "Encoding",  "X-Other",
                                      "Bad Key",   "N\xc3\xa4me", "Ty]pe",  "",          "A#b"};
  const std::vector<std::string> locales{
      "",    "",          "", "[de]", "[de_CH]", "[fr]", "[DE]", "[de_CH.UTF-8]", "[]", "[d\xc3\xa9]",
      "[de", "[sr@latin]"};
  const std::vector<std::string> separators{"=", "=", " = ", "\t=\t", "=\f", " =", "=="};
  const std::vector<std::string> values{
      // Types and booleans, as GLib takes them and otherwise.
      "Application", "Application ", "true", "false", "1", "0", "True", "yes", "true ",
      // Lists, escapes, bytes, commands and encodings.
      "GNOME;KDE;", "GNOME;;", ";", "", "a\\;b;c", "a\\sb", "x\\", "\\q", "\xff\xfe", "D\xc3\xa4tei",
      "sh -c 'x y'", "tool %U", "UTF-8", "utf-8", "ISO-8859-1", "a\\\\;b", "x\\;", "# not a comment"};
  const std::vector<std::string> endings{"\n", "\n", "\n", "\n", "\n", "\n", "\r\n", "\n\n"};

  std::mt19937 random(20261122);
  const auto pick = [&](const std::vector<std::string>& from) -> const std::string& {
    return from[random() % from.size()];
  };
  int settled = 0;
  constexpr int kFiles = 4000;
  for (int i = 0; i < kFiles; ++i) {
    std::string text = random() % 8 == 0 ? pick(others) + "\n" : "";
    text += random() % 6 == 0 ? pick(groups) : "[Desktop Entry]";
    text += "\n";
    const auto lines = random() % 10;
    for (std::size_t line = 0; line < lines; ++line) {
      const auto kind = random() % 12;
      if (kind == 0)
        text += pick(groups);
      else if (kind == 1)
        text += pick(others);
      else
        text += pick(indents) + pick(keys) + pick(locales) + pick(separators) + pick(values);
      text += random() % 10 == 0 ? pick(endings) : "\n";
    }
    if (random() % 5 == 0) text.pop_back();
    if (agreesWithGLib(text)) ++settled;
    if (::testing::Test::HasFailure()) break;
  }
  // The comparison means little unless the reader settles a fair share.
  EXPECT_GT(settled, kFiles / 10);
}

TEST(DesktopEntryFile, CommandProgramSplitsLikeTheShellParser) {
  const std::vector<std::string> commands{
      "tool %U",   "  tool\t--flag", "/usr/bin/tool", "",
      "   ",       "\"my tool\" %F", "'it''s' x",     "tool\\ name x",
      "# comment", "tool # note",    "a#b c",         "\"unterminated",
      "x\ny",      "\"\" tool",      "env A=1 tool",  "t\xc3\xb6\xc3\xb6l"};
  for (const std::string& command : commands) {
    gint argc = 0;
    gchar** argv = nullptr;
    std::optional<std::string> expected;
    if (g_shell_parse_argv(command.c_str(), &argc, &argv, nullptr) && argc >= 1) expected = argv[0];
    g_strfreev(argv);
    EXPECT_EQ(commandProgram(command), expected) << ::testing::PrintToString(command);
  }
}

}  // namespace
}  // namespace orrery::platform
