#include <gtest/gtest.h>

#include "pool/HeldLogs.h"
#include "pool/KDVersionTree.h"
#include "pool/PoolSyncSteps.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {
namespace {

/// A participant x@far.local, and two others who gave their versions of "f" the second 50.
class HeldLogsTest : public testing::Test {
 protected:
  HeldLogsTest() {
    std::string text;
    for (const char* line : {R"("100","0","f","50","","")", R"("300","100","f","0","","")"}) {
      offsets.push_back(text.size());
      text += std::string(line) + "\n";
    }
    host.files.write("/home/user/Docs/.Zolvar/b@there.local.fplog", text);
    sizes = {{"b@there.local.fplog", text.size()}};
    folder = std::move(*host.files.open("/home/user/Docs"));
    wanted = add("a@here.local", 90, 0, 50);
    other = add("b@there.local", 100, 0, 50);
  }
  KDLogFileEntry* add(const std::string& user, double logTime, double plogTime, double modTime) {
    KDEntryFields fields;
    fields.path = "f";
    fields.userId = user;
    fields.logTime = logTime;
    fields.plogTime = plogTime;
    fields.modTime = modTime;
    KDLogFileEntry* entry = store.add(fields);
    tree.append(entry);
    return entry;
  }
  /// As the participant tells that it has so many bytes of b@there.local's log, and of its own.
  [[nodiscard]] HeldLogs held(std::uint64_t bytes, double now = 1000, std::uint64_t own = 0) {
    return HeldLogs({{'-', bytes, {}, ".Zolvar/b@there.local.fplog"},
                     {'-', own, {}, ".Zolvar/x@far.local.fplog"}},
                    Participant, sizes, *folder, told, now);
  }
  [[nodiscard]] bool isAmbiguous(const std::string& userId, const HeldLogs& logs) const {
    return tree.isAmbiguous(*wanted, userId, logs);
  }

  static constexpr const char* Participant = "x@far.local";
  SimulatedPlatform host;
  std::unique_ptr<Folder> folder;
  std::map<std::string, std::uint64_t> sizes;
  std::vector<std::uint64_t> offsets;
  ToldLogs told;
  KDEntryStore store;
  KDVersionTree tree{store, "me@alpha.local"};
  KDLogFileEntry* wanted = nullptr;
  KDLogFileEntry* other = nullptr;
};

TEST_F(HeldLogsTest, tellsWhatAParticipantCannotKnow) {
  const KDLogFileEntry* deletion = add("b@there.local", 300, 100, 0);
  const std::uint64_t all = sizes.begin()->second;
  EXPECT_FALSE(held(0).mayHold(*other));
  EXPECT_TRUE(held(offsets[1]).mayHold(*other));
  EXPECT_FALSE(held(offsets[1]).mayHold(*deletion)) << "its line is not there";
  EXPECT_TRUE(held(offsets[1] + 1).mayHold(*deletion)) << "in the middle of a line nothing is told";
  EXPECT_TRUE(HeldLogs({}, Participant, sizes, *folder, told, 1000).mayHold(*other))
      << "a listing without logs tells nothing";
  EXPECT_FALSE(held(0, 1000, 0).hasLoggedMore());
  EXPECT_TRUE(held(0, 1000, 1).hasLoggedMore());

  told = {};
  EXPECT_FALSE(held(offsets[1], 1000).hasCarriedOut(*deletion));
  EXPECT_FALSE(held(all, 2000).hasCarriedOut(*deletion)) << "just arrived, however old it is";
  EXPECT_FALSE(held(all, 2030).hasCarriedOut(*deletion));
  EXPECT_TRUE(held(all, 2060).hasCarriedOut(*deletion));
  EXPECT_FALSE(held(offsets[1], 2070).hasCarriedOut(*deletion)) << "it has lost its logs";
  EXPECT_FALSE(held(all, 2080).hasCarriedOut(*deletion));
}

TEST_F(HeldLogsTest, onlyTheAuthorSurelyHasOneOfTwoVersionsOfASecond) {
  const std::uint64_t all = sizes.begin()->second;
  EXPECT_TRUE(isAmbiguous(Participant, held(all)));
  EXPECT_FALSE(isAmbiguous("a@here.local", held(all)));
  EXPECT_TRUE(isAmbiguous("a@here.local", held(all, 1000, 1)))
      << "who may have chosen the other one";
  tree.selectLogEntry(*wanted, Participant);
  EXPECT_TRUE(isAmbiguous(Participant, held(all))) << "who chooses fetches later";
  EXPECT_TRUE(tree.sharesSecond(*wanted));
  add("b@there.local", 300, 100, 0);
  EXPECT_FALSE(tree.sharesSecond(*wanted));
  EXPECT_TRUE(isAmbiguous(Participant, held(offsets[1]))) << "not heard of the deletion";
  (void)held(all, 2000);
  EXPECT_FALSE(isAmbiguous(Participant, held(all, 2100)));
}

}  // namespace
}  // namespace zolvar
