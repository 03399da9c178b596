// The overlay's background in the real program on a desktop of its own
// (Xvfb and openbox): a picture set with feh shows blurred behind the grid,
// and a light solid colour gets dark labels.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "Orrery/tests/program/DesktopSession.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

struct Pixel {
  int red = 0;
  int green = 0;
  int blue = 0;
  int brightness() const { return (2126 * red + 7152 * green + 722 * blue) / 10000; }
};

// A screenshot's pixels, read through ImageMagick as raw RGB.
struct Screen {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> rgb;
  Pixel at(int x, int y) const {
    const std::size_t offset =
        (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 3;
    return {rgb[offset], rgb[offset + 1], rgb[offset + 2]};
  }
};

class BackgroundProgramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto started = DesktopSession::start();
    ASSERT_TRUE(started) << started.error();
    session = std::move(*started);
    fs::create_directories(tree() / "data/applications");
    fs::create_directories(tree() / "home");
    fs::create_directories(tree() / "config/Lumenfold");
    // Light icons, so every dark pixel on a light background is a label.
    ASSERT_TRUE(session
                    ->run({"convert", "-size", "96x96", "xc:#FAFAFA", "-fill", "#E0E0E0", "-draw",
                           "rectangle 8,8 88,88", (tree() / "icon.png").string()})
                    .succeeded());
    for (const char* name : {"Alpha", "Beta", "Gamma", "Delta"}) {
      std::ofstream(tree() / "data/applications" / (std::string(name) + ".desktop"))
          << "[Desktop Entry]\nType=Application\nName=" << name
          << "\nExec=true\nIcon=" << (tree() / "icon.png").string() << "\n";
    }
  }

  const fs::path& tree() const { return temporary.path(); }
  std::string log() const {
    std::ifstream in(tree() / "orrery.log");
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }
  void writeSettings(const std::string& json) {
    std::string escaped;
    for (const char c : json) {
      if (c == '"') escaped += '\\';
      escaped += c;
    }
    std::ofstream(tree() / "config/Lumenfold/Orrery.conf")
        << "[General]\nsettings=\"@ByteArray(" << escaped << ")\"\n";
  }
  std::optional<XWindow> showOverlay() {
    session->launch({ORRERY_PROGRAM, "--show-overlay"},
                    DesktopSession::programEnvironment(tree(), {"XDG_CURRENT_DESKTOP="}),
                    tree() / "orrery.log");
    const auto window = session->waitForWindow(WindowQuery::byName("^Orrery$"), 30s);
    if (!window || !session->waitUntilFullscreen(*window, 20s)) return std::nullopt;
    return window;
  }
  std::optional<Screen> screenshot() {
    const fs::path png = tree() / "shot.png";
    const fs::path raw = tree() / "shot.rgb";
    if (!session->screenshot(png)) return std::nullopt;
    if (!session->run({"convert", png.string(), "-depth", "8", "rgb:" + raw.string()}).succeeded())
      return std::nullopt;
    std::ifstream in(raw, std::ios::binary);
    Screen screen{session->width(), session->height(),
                  std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {})};
    if (screen.rgb.size() != static_cast<std::size_t>(screen.width * screen.height * 3)) return std::nullopt;
    return screen;
  }

  TemporaryDirectory temporary{"orrery-background"};
  std::unique_ptr<DesktopSession> session;
};

TEST_F(BackgroundProgramTest, APictureSetWithFehShowsBlurredBehindTheGrid) {
  ASSERT_TRUE(session);
  // Black on the left, white on the right: one sharp edge down the middle.
  const fs::path picture = tree() / "wallpaper.png";
  ASSERT_TRUE(session
                  ->run({"convert", "-size", "1280x800", "xc:black", "-fill", "white", "-draw",
                         "rectangle 640,0 1279,799", picture.string()})
                  .succeeded());
  ASSERT_TRUE(session->run({"feh", "--no-fehbg", "--bg-scale", picture.string()}).succeeded());
  ASSERT_TRUE(session->property(0, "_XROOTPMAP_ID"));

  const auto overlay = showOverlay();
  ASSERT_TRUE(overlay) << session->logs() << log();
  // Read well below the grid's first row, where only the background is.
  const int y = session->height() - 100;
  std::optional<Screen> screen;
  const bool blurred = session->waitUntil(
      [&] {
        screen = screenshot();
        if (!screen) return false;
        // The picture is there (dark left, light right) and its edge is soft.
        return screen->at(100, y).brightness() < 40 && screen->at(1180, y).brightness() > 150 &&
               screen->at(630, y).brightness() > 50 && screen->at(650, y).brightness() < 180;
      },
      20s);
  ASSERT_TRUE(screen) << log();
  EXPECT_TRUE(blurred) << "left " << screen->at(100, y).brightness() << ", edge "
                       << screen->at(630, y).brightness() << "/" << screen->at(650, y).brightness()
                       << ", right " << screen->at(1180, y).brightness() << "\n"
                       << log();
  // Across the edge the brightness climbs steadily rather than jumping.
  for (int x = 560; x < 720; x += 8) {
    EXPECT_LE(screen->at(x, y).brightness(), screen->at(x + 8, y).brightness() + 2) << x;
    EXPECT_LT(screen->at(x + 8, y).brightness() - screen->at(x, y).brightness(), 40) << x;
  }
  EXPECT_NE(log().find("Schreibtischbild weichgezeichnet: erfolgreich in "), std::string::npos) << log();
  EXPECT_NE(log().find(" ms (1280×800)"), std::string::npos) << log();

  // A new picture while the overlay is up: white on the left now.
  const fs::path next = tree() / "next.png";
  ASSERT_TRUE(session
                  ->run({"convert", "-size", "1280x800", "xc:white", "-fill", "black", "-draw",
                         "rectangle 640,0 1279,799", next.string()})
                  .succeeded());
  ASSERT_TRUE(session->run({"feh", "--no-fehbg", "--bg-scale", next.string()}).succeeded());
  EXPECT_TRUE(session->waitUntil(
      [&] {
        screen = screenshot();
        return screen && screen->at(100, y).brightness() > 150 && screen->at(1180, y).brightness() < 40;
      },
      20s))
      << log();
}

TEST_F(BackgroundProgramTest, ALightSolidColourGetsDarkLabels) {
  ASSERT_TRUE(session);
  writeSettings(R"({"background":"solid","solidColorHex":"#F0F0F0"})");
  const auto overlay = showOverlay();
  ASSERT_TRUE(overlay) << session->logs() << log();
  // The grid is filled by the first scan.
  ASSERT_TRUE(session->waitUntil(
      [&] {
        std::ifstream in(tree() / "data/Orrery/layout.json");
        return std::string(std::istreambuf_iterator<char>(in), {}).find("Delta.desktop") != std::string::npos;
      },
      20s))
      << log();

  std::optional<Screen> screen;
  int dark = 0;
  const bool labelled = session->waitUntil(
      [&] {
        screen = screenshot();
        // Faded in all the way: the root window behind is black.
        if (!screen || screen->at(2, 2).red < 0xEE) return false;
        dark = 0;
        for (int y = 0; y < screen->height; ++y)
          for (int x = 0; x < screen->width; ++x) dark += screen->at(x, y).brightness() < 90 ? 1 : 0;
        // Four names and the search field's placeholder, drawn dark.
        return dark > 150;
      },
      20s);
  ASSERT_TRUE(screen) << log();
  EXPECT_TRUE(labelled) << dark << " dark pixels\n" << log();
  for (const auto& [x, y] : {std::pair{2, 2}, {session->width() - 3, session->height() - 3}}) {
    const Pixel corner = screen->at(x, y);
    EXPECT_NEAR(corner.red, 0xF0, 2);
    EXPECT_NEAR(corner.green, 0xF0, 2);
    EXPECT_NEAR(corner.blue, 0xF0, 2);
  }
  // Nothing was blurred for a solid colour.
  EXPECT_EQ(log().find("Schreibtischbild"), std::string::npos) << log();
}

}  // namespace
}  // namespace orrery::testing
