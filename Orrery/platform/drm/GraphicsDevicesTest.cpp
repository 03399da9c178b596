#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "Orrery/platform/drm/GraphicsDevices.h"

namespace orrery::platform {
namespace {

TEST(GraphicsDevicesTest, OnlyADrmNodeCountsAsAGraphicsDevice) {
  const auto root = std::filesystem::temp_directory_path() /
                    ("orrery-dri-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()));
  std::filesystem::remove_all(root);
  EXPECT_FALSE(hasGraphicsDevice(root));  // no folder at all: a container without /dev/dri

  std::filesystem::create_directories(root / "by-path");
  EXPECT_FALSE(hasGraphicsDevice(root));
  std::ofstream(root / "renderD128").put('\n');
  EXPECT_TRUE(hasGraphicsDevice(root));

  std::filesystem::remove(root / "renderD128");
  std::ofstream(root / "card0").put('\n');  // an older driver without render nodes
  EXPECT_TRUE(hasGraphicsDevice(root));
  std::filesystem::remove_all(root);
}

}  // namespace
}  // namespace orrery::platform
