#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/trash/ConfirmedTrash.h"
#include "OrreryCore/trash/TrashOutcome.h"
#include "OrreryCore/trash/TrashRequest.h"

namespace orrery {
namespace {

using testing::byID;

AppInfo app(const std::string& id, std::string name) {
  return AppInfo{id, std::move(name), "/Applications/" + id + ".app", std::nullopt};
}

std::vector<std::string> names(const TrashRequest& request) {
  std::vector<std::string> out;
  for (const auto& info : request.apps) out.push_back(info.name);
  return out;
}

std::vector<std::string> paragraphs(const std::string& text) {
  std::vector<std::string> out;
  std::size_t start = 0;
  while (true) {
    const auto end = text.find("\n\n", start);
    out.push_back(text.substr(start, end - start));
    if (end == std::string::npos) return out;
    start = end + 2;
  }
}

// A request of `count` apps named "App 1" … "App <count>".
TrashRequest numberedRequest(int count, std::int64_t skipped = 0) {
  std::vector<AppInfo> apps;
  AppIDSet ids;
  for (int i = 1; i <= count; ++i) {
    apps.push_back(app("id" + std::to_string(i), "App " + std::to_string(i)));
    ids.insert(apps.back().id);
  }
  return TrashRequest(ids, byID(apps), skipped);
}

// A platform double: remembers the call and answers when told to, as the
// real one does later on another thread.
class DeferredTrash : public TrashService {
 public:
  void moveToTrash(std::vector<std::string> paths, Completion completion) override {
    requested = std::move(paths);
    pending = std::move(completion);
  }
  std::vector<std::string> requested;
  Completion pending;
};

TEST(TrashRequest, AppsAreInNameOrderAndUnknownIDsDropOut) {
  const auto catalog = byID({app("b", "Zebra"), app("a", "app 10"), app("c", "App 9"), app("e", "Notes"),
                             app("d", "Notes"), app("f", "Äpfel")});
  const TrashRequest request(AppIDSet{"a", "b", "c", "d", "e", "f", "gone"}, catalog, 1);
  EXPECT_EQ(names(request),
            (std::vector<std::string>{"Äpfel", "App 9", "app 10", "Notes", "Notes", "Zebra"}));
  EXPECT_EQ(request.apps[3].id, "d");  // equal names by ID
  EXPECT_EQ(request.skipped, 1);
  EXPECT_EQ(request.title(), "Move 6 apps to the Trash?");
  EXPECT_EQ(request.confirmed().apps(), request.apps);
}

TEST(TrashRequest, MessageListsTenNamesAtMostThenTheRestoreHint) {
  EXPECT_EQ(paragraphs(numberedRequest(3).message({})),
            (std::vector<std::string>{"• App 1\n• App 2\n• App 3", "You can restore them from the Trash."}));
  EXPECT_EQ(paragraphs(numberedRequest(12).message({}))[0],
            "• App 1\n• App 2\n• App 3\n• App 4\n• App 5\n• App 6\n• App 7\n• App 8\n• App 9\n• App 10\n"
            "… and 2 more");
  const auto lastLine = [](int count) {
    const std::string list = paragraphs(numberedRequest(count).message({}))[0];
    return list.substr(list.rfind('\n') + 1);
  };
  EXPECT_EQ(lastLine(10), "• App 10");
  EXPECT_EQ(lastLine(11), "… and 1 more");
}

TEST(TrashRequest, RunningAndSkippedAppsGetTheirOwnParagraphs) {
  // Running apps are named in list order, also beyond the shortened list.
  const auto request = numberedRequest(12, 2);
  const auto parts = paragraphs(request.message(AppIDSet{"id12", "id2", "unrelated"}));
  ASSERT_EQ(parts.size(), 4U);
  EXPECT_EQ(parts[1], "Still open: App 2, App 12. Please quit these apps first.");
  EXPECT_EQ(parts[2], "2 selected apps stay; they can't be moved to the Trash.");
  EXPECT_EQ(parts[3], "You can restore them from the Trash.");
}

TEST(ConfirmedTrash, PerformReportsMovedAppsAndWhyOthersStayed) {
  const auto catalog =
      byID({app("pages", "Pages"), app("chess", "Chess"), app("notes", "Notes"), app("mail", "Mail")});
  const auto confirmed = TrashRequest(AppIDSet{"pages", "chess", "notes", "mail"}, catalog, 0).confirmed();

  DeferredTrash service;
  std::vector<TrashOutcome> reported;
  confirmed.perform(service, [&](TrashOutcome outcome) { reported.push_back(std::move(outcome)); });
  EXPECT_EQ(service.requested,
            (std::vector<std::string>{"/Applications/chess.app", "/Applications/mail.app",
                                      "/Applications/notes.app", "/Applications/pages.app"}));
  EXPECT_TRUE(reported.empty());  // nothing until the platform answers

  const TrashService::Failures failures = {
      {"/Applications/chess.app", {TrashFailure::Kind::systemOwned, "Permission denied"}},
      {"/Applications/notes.app", {TrashFailure::Kind::other, "The disk is full."}},
      {"/Applications/mail.app", {TrashFailure::Kind::other, ""}},
      {"/Applications/unrelated.app", {TrashFailure::Kind::other, "ignored"}},
  };
  service.pending(failures);
  service.pending({});  // a faulty second answer is ignored
  ASSERT_EQ(reported.size(), 1U);
  const TrashOutcome& outcome = reported[0];
  EXPECT_EQ(outcome.trashedIDs, (AppIDSet{"pages"}));
  EXPECT_EQ(outcome.failures, (std::vector<TrashOutcome::Failure>{{"Chess", "Owned by the system."},
                                                                  {"Mail", "The system gave no reason."},
                                                                  {"Notes", "The disk is full."}}));
  EXPECT_EQ(outcome.failureMessage(),
            "Chess: Owned by the system.\nMail: The system gave no reason.\nNotes: The disk is full.\n\n" +
                TrashOutcome::adminRequiredReason());
}

TEST(ConfirmedTrash, OutcomeMessages) {
  EXPECT_FALSE((TrashOutcome{{"a"}, {}}).failureMessage());
  // Without a system-owned failure there is no advice paragraph.
  EXPECT_EQ((TrashOutcome{{}, {{"Notes", "The disk is full."}}}).failureMessage(),
            "Notes: The disk is full.");

  const auto confirmed = TrashRequest(AppIDSet{"pages"}, byID({app("pages", "Pages")}), 0).confirmed();
  DeferredTrash service;
  std::optional<TrashOutcome> reported;
  confirmed.perform(service, [&](TrashOutcome outcome) { reported = std::move(outcome); });
  service.pending({});
  ASSERT_TRUE(reported);
  EXPECT_EQ(*reported, (TrashOutcome{{"pages"}, {}}));
  EXPECT_FALSE(reported->failureMessage());
}

}  // namespace
}  // namespace orrery
