#include <QSignalSpy>

#include <gtest/gtest.h>

#include <vector>

#include "Orrery/settings/QSettingsKeyValueStore.h"
#include "Orrery/settings/SettingsStore.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::app {
namespace {

struct Call {
  Settings old;
  Settings current;
};

class SettingsStoreTest : public ::testing::Test {
 protected:
  SettingsStore& make() {
    store = std::make_unique<SettingsStore>(defaults);
    store->setOnChange([this](const Settings& old, const Settings& current) {
      calls.push_back({old, current});
    });
    return *store;
  }

  MemoryKeyValueStore defaults;
  std::vector<Call> calls;
  std::unique_ptr<SettingsStore> store;
};

TEST_F(SettingsStoreTest, ALocalChangeIsSavedAnnouncedAndHandedToTheHook) {
  make();
  QSignalSpy changed(store.get(), &SettingsStore::settingsChanged);
  Settings edited = store->settings();
  edited.columns = 9;
  edited.corner = Corner::topLeft;
  store->setSettings(edited);

  EXPECT_EQ(changed.count(), 1);
  EXPECT_EQ(Settings::load(defaults), edited);
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].old, Settings());
  EXPECT_EQ(calls[0].current, edited);
}

TEST_F(SettingsStoreTest, AnEqualRecordIsSavedAgainAndHandedToTheHookButNotAnnounced) {
  make();
  QSignalSpy changed(store.get(), &SettingsStore::settingsChanged);
  const std::size_t writes = defaults.writeCount();
  store->setSettings(store->settings());

  EXPECT_EQ(changed.count(), 0);
  EXPECT_EQ(defaults.writeCount(), writes + 1);
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].old, calls[0].current);
}

TEST_F(SettingsStoreTest, RemoteSettingsChangeOnlyTheSharedFieldsAndNeverEchoBack) {
  Settings local;
  local.columns = 10;
  local.launchAtLogin = true;
  local.save(defaults);
  make();
  QSignalSpy changed(store.get(), &SettingsStore::settingsChanged);

  SyncedSettings remote = local.synced();
  remote.background = BackgroundStyle::solid;
  remote.hotKey = HotKey{49, 256};
  store->applyRemote(remote);

  Settings expected = local;
  expected.background = BackgroundStyle::solid;
  expected.hotKey = HotKey{49, 256};
  EXPECT_EQ(store->settings(), expected);
  EXPECT_EQ(Settings::load(defaults), expected);
  EXPECT_EQ(changed.count(), 1);
  EXPECT_TRUE(calls.empty());

  // The same again changes nothing, not even the stored bytes.
  const std::size_t writes = defaults.writeCount();
  store->applyRemote(remote);
  EXPECT_EQ(defaults.writeCount(), writes);
  EXPECT_EQ(changed.count(), 1);

  // Local changes still reach the hook afterwards.
  Settings edited = store->settings();
  edited.animations = false;
  store->setSettings(edited);
  EXPECT_EQ(calls.size(), 1u);
}

TEST(QSettingsKeyValueStore, KeepsTheBytesAcrossInstances) {
  orrery::testing::TemporaryDirectory folder("orrery-settings");
  const QString file = QString::fromStdString((folder.path() / "Orrery.conf").string());
  const std::string bytes = R"({"solidColorHex":"#ÄÖ\"=;[x]","columns":7})";
  {
    QSettingsKeyValueStore store(file);
    EXPECT_EQ(store.data("settings"), std::nullopt);
    store.setData("settings", bytes);
  }
  QSettingsKeyValueStore reopened(file);
  EXPECT_EQ(reopened.data("settings"), bytes);
}

}  // namespace
}  // namespace orrery::app
