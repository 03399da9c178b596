#include "Orrery/platform/bundle/BundleInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include <plist/plist.h>

#include "Orrery/platform/bundle/BundleInfoComparison.h"
#include "Orrery/platform/posix/QuotedBytes.h"

namespace orrery::platform {
namespace {

using namespace std::string_literals;
using ::testing::IsEmpty;

const std::string kPrologue =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n";

std::string document(const std::string& entries) {
  return kPrologue + "<plist version=\"1.0\">\n<dict>\n" + entries + "</dict>\n</plist>\n";
}

// Whether one of the readers took `bytes` itself; if so, its strings must
// be libplist's.
bool agreesWithLibplist(const std::string& bytes) {
  const BundleInfoComparison comparison = compareWithLibplist(bytes);
  EXPECT_THAT(comparison.differences, IsEmpty()) << quotedBytes(bytes);
  return comparison.settled;
}

TEST(BundleInfo, ReadsCommonXmlLikeLibplist) {
  const std::vector<std::string> taken{
      document("\t<key>CFBundleDisplayName</key>\n\t<string>Mail &amp; More &lt;3&gt; &quot;&apos;</string>\n"
               "\t<key>CFBundleName</key>\n\t<string>  Mail\n </string>\n"
               "\t<key>CFBundleIdentifier</key>\n\t<string>com.apple.mail</string>\n"),
      // Nested values, other types, keys that only look alike, raw bytes.
      document(
          "<key>LSItems</key><array><string>a</string><dict><key>CFBundleName</key><string>inner</string>"
          "</dict><array/><true/><integer>-3</integer></array><key>CFBundleName</key><string>Caf\xc3\xa9 "
          "\xff a > b</string><key> CFBundleIdentifier</key><string>x</string><key>Flags</key><dict/>"),
      "<plist><dict/></plist>",
      "  <plist>\n<dict><key>CFBundleName</key><string></string></dict></plist>\n\n",
  };
  for (const std::string& xml : taken) EXPECT_TRUE(agreesWithLibplist(xml)) << xml;

  // Left to libplist. (The generated documents below hold repeated keys,
  // carriage returns, comments, CDATA, bare ampersands and reals.)
  const std::vector<std::string> leftToLibplist{
      document("<key>CFBundleName</key><string>&#169;</string>"),
      document("<key>CFBundleName</key><string id=\"1\">x</string>"),
      document("<key>X</key><key>CFBundleName</key><string>x</string>"),
      "\xef\xbb\xbf<plist><dict/></plist>",
      "<plist><array/></plist>",
      "<plist><dict></dict>",
      "<plist><dict></dict></plist>junk",
      "<plist><dict><key>CFBundleName</key><string>a\0b</string></dict></plist>"s,
      "",
  };
  for (const std::string& xml : leftToLibplist) EXPECT_FALSE(BundleInfo::fromXml(xml)) << xml;
  // An empty view without any data behind it, as a default-made one is.
  EXPECT_EQ(BundleInfo::read(std::string_view()), BundleInfo{});
}

std::string binary(plist_t plist) {
  char* bytes = nullptr;
  uint32_t length = 0;
  plist_to_bin(plist, &bytes, &length);
  std::string result(bytes, length);
  plist_to_bin_free(bytes);
  plist_free(plist);
  return result;
}

// UTF-16 strings, as libplist writes anything outside ASCII, are libplist's
// to read.
TEST(BundleInfo, LeavesUtf16StringsToLibplist) {
  plist_t notes = plist_new_dict();
  plist_dict_set_item(notes, "CFBundleName", plist_new_string("Notizen \xe2\x9c\x8e"));
  const std::string utf16 = binary(notes);
  EXPECT_FALSE(BundleInfo::fromBinary(utf16));
  EXPECT_EQ(BundleInfo::read(utf16), (BundleInfo{std::nullopt, "Notizen \xe2\x9c\x8e", std::nullopt}));
}

// Binary lists as libplist writes them, then with a few bytes changed: the
// reader must either refuse them or read what libplist reads.
TEST(BundleInfo, ReadsGeneratedAndDamagedBinaryListsLikeLibplist) {
  const std::vector<std::string> keys{"CFBundleName", "CFBundleDisplayName", "CFBundleIdentifier", "Other",
                                      "CFBundleNam"};
  const std::vector<std::string> strings{"App", "", "A much longer name than fifteen letters", "Caf\xc3\xa9",
                                         "com.example.app"};
  std::mt19937 random(20261122);
  const auto pick = [&](const std::vector<std::string>& from) -> const std::string& {
    return from[random() % from.size()];
  };
  const std::function<plist_t(int)> value = [&](int depth) -> plist_t {
    switch (random() % (depth < 2 ? 8 : 5)) {
      case 0:
      case 1:
        return plist_new_string(pick(strings).c_str());
      case 2:
        return plist_new_bool(random() % 2);
      case 3:
        return plist_new_uint(random() % 2 == 0 ? 7 : 1ull << 40);
      case 4:
        return plist_new_real(1.5);
      case 5: {
        plist_t array = plist_new_array();
        for (auto i = random() % 4; i > 0; --i) plist_array_append_item(array, value(depth + 1));
        return array;
      }
      default: {
        plist_t dict = plist_new_dict();
        for (auto i = random() % 4; i > 0; --i)
          plist_dict_set_item(dict, pick(keys).c_str(), value(depth + 1));
        return dict;
      }
    }
  };
  int taken = 0;
  constexpr int kLists = 3000;
  for (int i = 0; i < kLists; ++i) {
    plist_t dict = plist_new_dict();
    for (auto entries = random() % 6; entries > 0; --entries)
      plist_dict_set_item(dict, pick(keys).c_str(), value(0));
    std::string bytes = binary(dict);
    for (auto damage = random() % 3; damage > 0; --damage)
      bytes[random() % bytes.size()] = static_cast<char>(random() % 256);
    if (agreesWithLibplist(bytes)) ++taken;
    if (::testing::Test::HasFailure()) break;
  }
  EXPECT_GT(taken, kLists / 10);
}

// Dictionaries put together from pieces that each stress one rule, many
// thousand times over with a fixed seed.
TEST(BundleInfo, ReadsGeneratedXmlLikeLibplist) {
  const std::vector<std::string> keys{// The keys read,
                                      "CFBundleName", "CFBundleDisplayName", "CFBundleIdentifier",
                                      // and keys that only look like them.
                                      " CFBundleName", "Other", "A&amp;B", "CFBundle&#78;ame", "a&b"};
  const std::vector<std::string> values{
      // Strings, plain, escaped, badly escaped, blank and in raw bytes.
      "<string>x</string>", "<string/>", "<string></string>", "<string>a &amp; b &lt;</string>",
      "<string>a & b</string>", "<string>&nbsp;</string>", "<string>  sp \t </string>",
      "<string>Caf\xc3\xa9</string>", "<string>\xff\x01</string>",
      // Other types, and markup only libplist reads.
      "<integer>3</integer>", "<integer>-</integer>", "<true/>", "<false></false>",
      "<array><string>a</string><true/></array>", "<dict><key>CFBundleName</key><string>in</string></dict>",
      "<array/>", "<dict/>", "<real>1</real>", "<!-- c --><string>x</string>",
      "<string><![CDATA[x]]></string>", "<string>a\r\nb</string>", "<string>x</strin>"};
  const std::vector<std::string> spaces{"", "\n", "\n\t", " \r\n"};
  std::mt19937 random(20261122);
  const auto pick = [&](const std::vector<std::string>& from) -> const std::string& {
    return from[random() % from.size()];
  };
  int taken = 0;
  constexpr int kDocuments = 3000;
  for (int i = 0; i < kDocuments; ++i) {
    std::string entries;
    const auto count = random() % 8;
    for (std::size_t entry = 0; entry < count; ++entry) {
      if (random() % 15 != 0) entries += "<key>" + pick(keys) + "</key>" + pick(spaces);
      entries += pick(values) + pick(spaces);
    }
    if (agreesWithLibplist(document(entries))) ++taken;
    if (::testing::Test::HasFailure()) break;
  }
  EXPECT_GT(taken, kDocuments / 10);
}

}  // namespace
}  // namespace orrery::platform
