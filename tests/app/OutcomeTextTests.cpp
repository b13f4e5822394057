#include <gtest/gtest.h>

#include "app/OutcomeTexts.h"
#include "app/VisibleFiles.h"
#include "util/InconsistencyError.h"

namespace zolvar {
namespace {

using Paths = std::set<std::string>;

Paths numbered(int count) {
  Paths paths;
  for (int i = 10; i < 10 + count; ++i) paths.insert("f" + std::to_string(i));
  return paths;
}

TEST(VisibleFiles, leaveOutWhatPeopleDoNotSee) {
  EXPECT_EQ(visibleFiles({"a", ".hidden", "b/.x/c", "Paper.pages", "Paper.pages/Index",
                          "Paper.pages2", "b/c"}),
            (std::vector<std::string>{"Paper.pages", "Paper.pages2", "a", "b/c"}));
  for (const char* bundle : {"x.app", "d/x.rtfd/", "Cards.zolvaraddresses"}) {
    EXPECT_TRUE(isBundlePath(bundle)) << bundle;
  }
  for (const char* plain : {"app", ".app", "d/.key", "x.txt", "x.app/y", ""}) {
    EXPECT_FALSE(isBundlePath(plain)) << plain;
  }
  EXPECT_EQ(pathForDisplay("/home/ann//Docs"), "home ▸ ann ▸ Docs");
}

TEST(OutcomeTexts, wordNotices) {
  const PoolText docs{"Docs", "Docs", false, {}};
  const PoolText cards{"Cards.zolvaraddresses", "Cards", true,
                       [](const std::string& path) { return "<" + path + ">"; }};
  struct Row {
    OutcomeNotice notice;
    const char* name;
    const char* title;
    std::string description;
  };
  const Row rows[] = {
      {successNotice(docs, {"a"}), "SyncSuccessNotification", "Got 1 file in 'Docs':", "\na"},
      {successNotice(docs, {"b", "a", ".x"}), "SyncSuccessNotification",
       "Got 2 files in 'Docs':", "\na\nb"},
      {successNotice(docs, {".x"}), "SyncSuccessNotification", "Got 0 files in 'Docs':", ""},
      {successNotice(cards, {"1"}), "SyncSuccessNotification",
       "Got 1 address in 'Cards':", "\n<1>"},
      {successNotice(cards, {"1", "2"}), "SyncSuccessNotification",
       "Got 2 addresses in 'Cards':", "\n<1>\n<2>"},
      {errorNotice(docs, "why"), "SyncErrorNotification", "Synchronization Error", "why"},
      {deletionNotice(docs, {"a"}), "DeletionNotification", "Moved Files to Trash",
       "Trashed 1 file in 'Docs':\n\na"},
      {deletionNotice(cards, {"1", "2"}), "DeletionNotification", "Moved Addresses to Trash",
       "Deleted 2 addresses in 'Cards':\n\n<1>\n<2>"},
      {conflictNotice(docs, "a/b", 3), "ConflictNotfication",
       "Conflict in Folder 'Docs':", "'a/b' has 3 different/conflicting versions."},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.notice.name, row.name);
    EXPECT_EQ(row.notice.title, row.title);
    EXPECT_EQ(row.notice.description, row.description);
    EXPECT_EQ(row.notice.isSticky, row.notice.click.has_value()) << "only conflicts";
  }
  const auto click = *rows[8].notice.click;
  EXPECT_EQ(click.type + "|" + click.poolName + "|" + click.fileName,
            "ConflictNotfication|Docs|a/b");
  const auto registered = registrationDictionary();
  EXPECT_EQ(registered.at("AllNotifications"), registered.at("DefaultNotifications"));
  EXPECT_EQ(registered.at("AllNotifications"),
            (std::vector<std::string>{"SyncSuccessNotification", "DeletionNotification",
                                      "ConflictNotfication", "SyncErrorNotification"}));
}

TEST(OutcomeTexts, cutLongLists) {
  const PoolText docs{"Docs", "Docs", false, {}};
  const std::string fifteen = successNotice(docs, numbered(15)).description;
  EXPECT_EQ(std::count(fifteen.begin(), fifteen.end(), '\n'), 15);
  EXPECT_TRUE(fifteen.ends_with("\nf24"));
  EXPECT_EQ(successNotice(docs, numbered(16)).description, fifteen + "\n...");

  EXPECT_EQ(deletionAlert("Docs", {"a", "b"}).text,
            "2 files have been (re-)moved from Synced Folder 'Docs' (a, b).\n"
            "Do you want Zolvar to delete them on the network or try to re-get it?");
  const auto alertAbout = [](const std::set<std::string>& paths) {
    return deletionAlert("Docs", {paths.begin(), paths.end()});
  };
  const Alert alert = alertAbout(numbered(20));
  EXPECT_EQ(alert.title, "Network-Delete files in 'Docs'?");
  EXPECT_EQ(alert.buttons, (std::vector<std::string>{"Re-Get", "Delete Everywhere"}));
  EXPECT_NE(alert.text.find("20 files"), std::string::npos);
  EXPECT_NE(alert.text.find("f22, f23, ..., f29)"), std::string::npos) << alert.text;
  EXPECT_EQ(alertAbout(numbered(14)).text.find("..."), std::string::npos);
  EXPECT_NE(deletionAlert("Docs", {".x"}).text.find("1 files"), std::string::npos);
  EXPECT_THROW(deletionAlert("Docs", {}), InconsistencyError);
}

TEST(OutcomeTexts, wordQuestions) {
  const auto password = passwordFailureText("Docs", "bob@b.local");
  EXPECT_EQ(password.message, "Password Failure for Sync Folder\n'Docs'");
  EXPECT_EQ(password.informative,
            "An authorization error happened while syncing.\n\nEither you haven't set a password "
            "or you and subscriber 'bob@b.local' set different passwords for this Sync Folder. \n\n"
            "Resolve this issue by changing your password or make 'bob@b.local' change hers/his."
            "\n\nNote, that each subscribers sets her own password and you will only sync with "
            "subscribers with matching passwords. Therefore you can choose to ignore certain "
            "subscribers to avoid this warning.");
  EXPECT_EQ(password.resolutions.at(2), "Ignoring Subscriber 'bob@b.local'");
  EXPECT_EQ(switchBranchWarning("a", "bob@b", "1/2/26"),
            "The file 'a' is about to be switched to the version from 'bob@b' with date '1/2/26'.");
  EXPECT_EQ(removePoolWarning("Docs"),
            "The Synced Folder 'Docs' and all contained data will be put in the trash.");
  EXPECT_EQ(pathsNotAccessibleAlert("Docs", "/d/Docs").text,
            "Synced Folder 'Docs' is not accessible to Zolvar.\nPlease check the path '/d/Docs'.");
}

}  // namespace
}  // namespace zolvar
