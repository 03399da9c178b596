#include "Orrery/platform/bundle/BundleIconLocator.h"

#include <gtest/gtest.h>

#include <plist/plist.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::platform {
namespace {

using Strings = std::vector<std::pair<std::string, std::string>>;

std::string infoPlist(const Strings& strings, bool binary) {
  plist_t dictionary = plist_new_dict();
  for (const auto& [key, value] : strings)
    plist_dict_set_item(dictionary, key.c_str(), plist_new_string(value.c_str()));
  char* bytes = nullptr;
  uint32_t length = 0;
  if (binary)
    plist_to_bin(dictionary, &bytes, &length);
  else
    plist_to_xml(dictionary, &bytes, &length);
  std::string result(bytes, length);
  if (binary)
    plist_to_bin_free(bytes);
  else
    plist_to_xml_free(bytes);
  plist_free(dictionary);
  return result;
}

TEST(BundleIconLocator, NamesTheIconFileInResources) {
  const std::string bundle = "/Applications/Maps.app";
  for (const bool binary : {false, true}) {
    SCOPED_TRACE(binary ? "binary" : "XML");
    EXPECT_EQ(BundleIconLocator::iconOfBundle(bundle, infoPlist({{"CFBundleIconFile", "AppIcon"}}, binary)),
              "/Applications/Maps.app/Contents/Resources/AppIcon.icns");
    EXPECT_EQ(BundleIconLocator::iconOfBundle(bundle, infoPlist({{"CFBundleIconFile", "Maps.icns"}}, binary)),
              "/Applications/Maps.app/Contents/Resources/Maps.icns");
    // Only the last component's dot is an extension.
    EXPECT_EQ(BundleIconLocator::iconOfBundle(bundle, infoPlist({{"CFBundleIconFile", "v1.2/Icon"}}, binary)),
              "/Applications/Maps.app/Contents/Resources/v1.2/Icon.icns");
    EXPECT_EQ(BundleIconLocator::iconOfBundle(bundle, infoPlist({{"CFBundleIconFile", ""}}, binary)), "");
    EXPECT_EQ(BundleIconLocator::iconOfBundle(bundle, infoPlist({{"CFBundleName", "Maps"}}, binary)), "");
  }
  EXPECT_EQ(BundleIconLocator::iconOfBundle(bundle, "not a property list"), "");
  EXPECT_EQ(BundleIconLocator::iconOfBundle(bundle, ""), "");
}

// An asset catalog's icon counts only where the bundle also carries it as
// an .icns file.
TEST(BundleIconLocator, ReadsTheBundleAndItsAssetCatalogIcon) {
  const orrery::testing::TemporaryDirectory folder;
  const std::filesystem::path bundle = folder.path() / "Notes.app";
  std::filesystem::create_directories(bundle / "Contents" / "Resources");
  std::ofstream(bundle / "Contents" / "Info.plist") << infoPlist({{"CFBundleIconName", "AppIcon"}}, false);
  const AppInfo notes{"com.example.notes", "Notes", bundle.string(), std::nullopt};

  const BundleIconLocator locator;
  EXPECT_EQ(locator.icon(notes), "");
  std::ofstream(bundle / "Contents" / "Resources" / "AppIcon.icns") << "icns";
  EXPECT_EQ(locator.icon(notes), (bundle / "Contents" / "Resources" / "AppIcon.icns").string());

  EXPECT_EQ(locator.icon(AppInfo{"gone", "Gone", (folder.path() / "Gone.app").string(), std::nullopt}), "");
}

}  // namespace
}  // namespace orrery::platform
