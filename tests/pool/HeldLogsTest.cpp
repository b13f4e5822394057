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
  /// As the participant tells that it has so many bytes of b@there.local's log.
  [[nodiscard]] HeldLogs held(std::uint64_t bytes, double now = 1000) const {
    return HeldLogs({{'-', bytes, {}, ".Zolvar/b@there.local.fplog"}}, Participant, sizes, *folder,
                    now);
  }
  [[nodiscard]] bool isAmbiguous(const std::string& userId, const HeldLogs& logs) const {
    return tree.isAmbiguous(*wanted, userId, logs);
  }

  static constexpr const char* Participant = "x@far.local";
  SimulatedPlatform host;
  std::unique_ptr<Folder> folder;
  std::map<std::string, std::uint64_t> sizes;
  std::vector<std::uint64_t> offsets;
  KDEntryStore store;
  KDVersionTree tree{store, "me@alpha.local"};
  KDLogFileEntry* wanted = nullptr;
  KDLogFileEntry* other = nullptr;
};

TEST_F(HeldLogsTest, tellsWhatAParticipantCannotKnow) {
  const KDLogFileEntry* deletion = add("b@there.local", 300, 100, 0);
  EXPECT_FALSE(held(0).mayHold(*other));
  EXPECT_TRUE(held(offsets[1]).mayHold(*other));
  EXPECT_FALSE(held(offsets[1]).hasCarriedOut(*deletion)) << "its line is not there";
  EXPECT_TRUE(held(offsets[1] + 1).mayHold(*deletion)) << "in the middle of a line nothing is told";
  EXPECT_FALSE(held(sizes.begin()->second, 310).hasCarriedOut(*deletion)) << "just arrived";
  EXPECT_TRUE(held(sizes.begin()->second).hasCarriedOut(*deletion));
  EXPECT_TRUE(HeldLogs({}, Participant, sizes, *folder, 1000).mayHold(*other))
      << "a listing without logs tells nothing";
}

TEST_F(HeldLogsTest, onlyTheAuthorSurelyHasOneOfTwoVersionsOfASecond) {
  const HeldLogs all = held(sizes.begin()->second);
  EXPECT_TRUE(isAmbiguous(Participant, all));
  EXPECT_FALSE(isAmbiguous("a@here.local", all));
  tree.selectLogEntry(*wanted, Participant);
  EXPECT_TRUE(isAmbiguous(Participant, all)) << "who chooses fetches later";
  add("b@there.local", 300, 100, 0);
  EXPECT_TRUE(isAmbiguous(Participant, held(offsets[1]))) << "not heard of the deletion";
  EXPECT_FALSE(isAmbiguous(Participant, all));
}

}  // namespace
}  // namespace zolvar
