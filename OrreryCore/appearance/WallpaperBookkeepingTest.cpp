#include <gtest/gtest.h>

#include <string>

#include "OrreryCore/appearance/WallpaperBookkeeping.h"

namespace orrery {
namespace {

using Bookkeeping = WallpaperBookkeeping<std::string>;
using Keys = std::vector<WallpaperKey>;
using Finished = Bookkeeping::Finished;

WallpaperKey key(std::uint32_t display, const std::string& picture, std::int64_t width = 2880,
                 std::int64_t height = 1800) {
  return WallpaperKey{display, "/pictures/" + picture, width, height};
}

TEST(WallpaperBookkeeping, RendersEachNeededKeyOnceAndPublishesIt) {
  Bookkeeping books;
  EXPECT_EQ(books.refresh({{1, key(1, "hills.jpg")}, {2, key(2, "hills.jpg", 1920, 1080)}}),
            (Keys{key(1, "hills.jpg"), key(2, "hills.jpg", 1920, 1080)}));
  // Asked again before anything finished: nothing new to start.
  EXPECT_EQ(books.refresh({{1, key(1, "hills.jpg")}, {2, key(2, "hills.jpg", 1920, 1080)}}), Keys{});
  EXPECT_EQ(books.image(1), nullptr);

  EXPECT_EQ(books.finish(key(1, "hills.jpg"), "blurred hills"), (Finished{true, false}));
  ASSERT_NE(books.image(1), nullptr);
  EXPECT_EQ(*books.image(1), "blurred hills");
  EXPECT_EQ(books.image(2), nullptr);
  EXPECT_EQ(books.image(3), nullptr);
  EXPECT_EQ(books.inFlight.size(), 1U);
  // A finished key is not started again.
  EXPECT_EQ(books.refresh(books.current), Keys{});
}

TEST(WallpaperBookkeeping, LateRenderIsKeptButNotPublished) {
  Bookkeeping books;
  books.refresh({{1, key(1, "hills.jpg")}});
  // The user picks another picture while the first render runs.
  EXPECT_EQ(books.refresh({{1, key(1, "sea.jpg")}}), Keys{key(1, "sea.jpg")});
  EXPECT_EQ(books.finish(key(1, "hills.jpg"), "blurred hills"), (Finished{false, false}));
  EXPECT_EQ(books.image(1), nullptr);
  EXPECT_TRUE(books.images.contains(key(1, "hills.jpg")));
  // The next refresh drops what no display needs.
  books.refresh({{1, key(1, "sea.jpg")}});
  EXPECT_FALSE(books.images.contains(key(1, "hills.jpg")));
  EXPECT_EQ(books.finish(key(1, "sea.jpg"), "blurred sea"), (Finished{true, false}));
  EXPECT_EQ(*books.image(1), "blurred sea");
}

TEST(WallpaperBookkeeping, FailedKeysAreNotRetriedButNewKeysAre) {
  Bookkeeping books;
  books.refresh({{1, key(1, "broken.heic")}});
  EXPECT_EQ(books.finish(key(1, "broken.heic"), std::nullopt), (Finished{false, true}));
  EXPECT_EQ(books.refresh({{1, key(1, "broken.heic")}}), Keys{});
  EXPECT_EQ(books.image(1), nullptr);
  // A second report of the same failure is not logged again.
  EXPECT_EQ(books.finish(key(1, "broken.heic"), std::nullopt), (Finished{false, false}));

  // Another screen size or another picture is a new key.
  EXPECT_EQ(books.refresh({{1, key(1, "broken.heic", 3840, 2160)}}), Keys{key(1, "broken.heic", 3840, 2160)});
  EXPECT_EQ(books.refresh({{1, key(1, "fine.jpg")}}), Keys{key(1, "fine.jpg")});
  // The failure is remembered even while no display needs the key.
  EXPECT_EQ(books.refresh({{1, key(1, "broken.heic")}}), Keys{});
}

TEST(WallpaperBookkeeping, DisconnectedDisplaysLoseTheirImages) {
  Bookkeeping books;
  books.refresh({{1, key(1, "hills.jpg")}, {2, key(2, "hills.jpg")}});
  books.finish(key(1, "hills.jpg"), "one");
  books.finish(key(2, "hills.jpg"), "two");
  books.refresh({{1, key(1, "hills.jpg")}});
  EXPECT_EQ(books.images.size(), 1U);
  EXPECT_EQ(books.image(2), nullptr);
  // Reconnected: the same key renders again, its image was dropped.
  EXPECT_EQ(books.refresh({{1, key(1, "hills.jpg")}, {2, key(2, "hills.jpg")}}), Keys{key(2, "hills.jpg")});
  EXPECT_EQ(*books.image(1), "one");
}

}  // namespace
}  // namespace orrery
