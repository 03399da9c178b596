// The shortcut recorder: what a key press does while recording, that the
// registered shortcut is off only for the recording, and that the settings
// window's field hands the window system's key to it.
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <map>
#include <vector>

#include "Orrery/triggers/ShortcutField.h"
#include "Orrery/triggers/ShortcutRecorder.h"
#include "Orrery/triggers/TriggerNotes.h"

namespace orrery::app {
namespace {

// Scan codes of a pretend keyboard: 9 Esc, 45 K (the layout types "k"),
// 50 Shift_L (no key of a shortcut), 65 Space.
class PretendLayout final : public KeyboardLayout {
 public:
  std::optional<std::string> character(std::uint32_t keyCode) override {
    if (keyCode == 40) return "k";
    return std::nullopt;
  }
  std::optional<std::uint32_t> keyCode(std::uint32_t scanCode) override {
    static const std::map<std::uint32_t, std::uint32_t> codes{{9, 53}, {45, 40}, {65, 49}};
    const auto found = codes.find(scanCode);
    return found == codes.end() ? std::nullopt : std::optional(found->second);
  }
};

struct Suspension {
  bool suspended;
  std::optional<TriggerSettings> restoring;
};

class ShortcutRecorderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Settings initial;
    initial.hotKey = HotKey{49, HotKey::kOption};
    store.setSettings(initial);
  }
  bool press(int scanCode, Qt::KeyboardModifiers modifiers, int qtKey = 0) {
    return recorder.keyPressed(qtKey, scanCode, static_cast<int>(modifiers.toInt()));
  }

  MemoryKeyValueStore defaults;
  SettingsStore store{defaults};
  TriggerStatus status;
  PretendLayout layout;
  std::vector<Suspension> calls;
  ShortcutRecorder recorder{store, status, &layout,
                            [this](bool suspended, const std::optional<TriggerSettings>& r) {
                              calls.push_back({suspended, r});
                            }};
};

TEST_F(ShortcutRecorderTest, RecordsTheFirstPressWithARealModifierAndRestoresOnEsc) {
  EXPECT_EQ(recorder.shortcutText(), QStringLiteral("Alt+Space"));
  EXPECT_FALSE(press(45, Qt::AltModifier)) << "not recording: the press is not ours";

  recorder.startRecording();
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_TRUE(calls[0].suspended);
  EXPECT_TRUE(press(45, Qt::NoModifier));
  EXPECT_TRUE(press(45, Qt::ShiftModifier));
  EXPECT_TRUE(press(50, Qt::ShiftModifier | Qt::ControlModifier)) << "a modifier key alone";
  EXPECT_TRUE(recorder.recording()) << "still waiting";
  EXPECT_EQ(calls.size(), 1U);

  EXPECT_TRUE(press(9, Qt::ControlModifier));
  EXPECT_FALSE(recorder.recording());
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_FALSE(calls[1].suspended);
  EXPECT_FALSE(calls[1].restoring) << "cancelled: the stored settings come back";
  EXPECT_EQ(store.settings().hotKey, (HotKey{49, HotKey::kOption}));

  recorder.startRecording();
  EXPECT_TRUE(press(45, Qt::AltModifier | Qt::ShiftModifier | Qt::MetaModifier));
  const HotKey recorded{40, HotKey::kOption | HotKey::kShift | HotKey::kCommand};
  EXPECT_EQ(store.settings().hotKey, recorded);
  ASSERT_EQ(calls.size(), 4U);
  ASSERT_TRUE(calls[3].restoring);
  EXPECT_EQ(calls[3].restoring->hotKey, recorded);
  EXPECT_EQ(recorder.shortcutText(), QStringLiteral("Alt+Shift+Super+K"));
  recorder.setStyle(ShortcutRecorder::Style::symbols);
  EXPECT_EQ(recorder.shortcutText(), QStringLiteral("⌥⇧⌘K"));

  recorder.clearShortcut();
  EXPECT_FALSE(store.settings().hotKey);
  EXPECT_TRUE(recorder.shortcutText().isEmpty());
}

TEST_F(ShortcutRecorderTest, WithoutALayoutOnlyEscIsRecognised) {
  ShortcutRecorder bare(store, status, nullptr, [this](bool s, const std::optional<TriggerSettings>& r) {
    calls.push_back({s, r});
  });
  bare.startRecording();
  EXPECT_TRUE(bare.keyPressed(Qt::Key_K, 45, Qt::AltModifier));
  EXPECT_TRUE(bare.recording());
  EXPECT_TRUE(bare.keyPressed(Qt::Key_Escape, 0, Qt::NoModifier));
  EXPECT_FALSE(bare.recording());
  EXPECT_EQ(store.settings().hotKey, (HotKey{49, HotKey::kOption}));
}

TEST_F(ShortcutRecorderTest, ARecorderClosedWhileRecordingGivesTheShortcutBack) {
  {
    ShortcutRecorder closing(store, status, &layout, [this](bool s, const std::optional<TriggerSettings>& r) {
      calls.push_back({s, r});
    });
    closing.startRecording();
  }
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_FALSE(calls.back().suspended);
}

TEST_F(ShortcutRecorderTest, TheFieldRecordsWhatIsPressedAndShowsTheError) {
  ShortcutField field(recorder);
  field.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&field));
  auto* record = field.findChild<QPushButton*>(QStringLiteral("recordShortcut"));
  auto* error = field.findChild<QLabel*>(QStringLiteral("shortcutError"));
  ASSERT_NE(record, nullptr);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(record->text(), QStringLiteral("Alt+Space"));

  QTest::mouseClick(record, Qt::LeftButton);
  ASSERT_TRUE(recorder.recording());
  record->setFocus();
  // The window system's scan code is what the layout reads.
  QKeyEvent press(QEvent::KeyPress, Qt::Key_K, Qt::ControlModifier, 45, 0, 0, QStringLiteral("k"));
  QCoreApplication::sendEvent(record, &press);
  EXPECT_FALSE(recorder.recording());
  EXPECT_EQ(store.settings().hotKey, (HotKey{40, HotKey::kControl}));
  EXPECT_EQ(record->text(), QStringLiteral("Ctrl+K"));

  EXPECT_TRUE(error->isHidden());
  status.setHotKeyError(TriggerStatus::alreadyUsedText());
  EXPECT_FALSE(error->isHidden());
  EXPECT_EQ(error->text(), TriggerStatus::alreadyUsedText());
}

TEST_F(ShortcutRecorderTest, TheNotesSayWhatTheDesktopDoesAndHideWhenThereIsNothing) {
  TriggerNotes notes(status);
  EXPECT_TRUE(notes.isHidden());
  status.setSystemCornerWarning(QStringLiteral("The desktop uses this corner itself."));
  status.setHotCornerAvailable(false);
  EXPECT_FALSE(notes.isHidden());
  EXPECT_TRUE(notes.text().contains(QStringLiteral("The desktop uses this corner itself.")));
  EXPECT_TRUE(notes.text().contains(status.hotCornerNote()));
  status.setSystemCornerWarning({});
  status.setHotCornerAvailable(true);
  EXPECT_TRUE(notes.isHidden());
}

}  // namespace
}  // namespace orrery::app
