#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "log/KDLogFile.h"
#include "log/LogLineCodec.h"
#include "log/LogReader.h"
#include "log/LogWorld.h"
#include "util/InconsistencyError.h"

namespace zolvar {
namespace {

using testing::ElementsAre;
using testing::ThrowsMessage;

const std::string Golden =
    "\"1750000000\",\"0\",\"Papers/plan.odt\",\"1749999990\",\"\",\"\"\n"
    "\"1750000005\",\"1750000000\",\"Papers/plan.odt\",\"1750000001.5\",\"eve@gamma.lan\",\"\"\n"
    "\"1750000005\",\"1749999000\",\"say \"\"hi\"\", Zoë.txt\",\"0\",\"\",\"\"\n";

struct Delegate : KDLogFileDelegate {
  int changes = 0;
  void logFileDidChange(KDLogFile&) override { ++changes; }
};

struct KDLogFileTest : testing::Test, LogWorld {
  void appendGolden(KDLogFile& file) {
    file.appendEntry(entry(1750000000, 0, "Papers/plan.odt", 1749999990));
    file.appendEntry(entry(1750000005, 1750000000, "Papers/plan.odt", 1750000001.5,
                           "bob@beta.local", "eve@gamma.lan"));
    file.appendEntry(nullptr);
    file.appendEntry(entry(1750000005, 1749999000, "say \"hi\", Zoë.txt", 0, "bob@beta.local",
                           "bob@beta.local"));
  }
};

TEST_F(KDLogFileTest, writesTheBytesOfTheFormatAndReadsThemBack) {
  Delegate delegate;
  KDLogFile log = file(&delegate);
  EXPECT_EQ(bytes(), "");
  EXPECT_TRUE(log.allEntries(store).empty());
  EXPECT_EQ(log.userId(), "bob@beta.local");
  ASSERT_TRUE(log.synchronizeFile());
  EXPECT_EQ(delegate.changes, 0);

  appendGolden(log);
  EXPECT_EQ(bytes(), "");
  files.faults.failAt(2, "append");  // everything is one write
  ASSERT_TRUE(log.synchronizeFile());
  files.faults.clear();
  EXPECT_EQ(bytes(), Golden);
  EXPECT_EQ(delegate.changes, 1);

  const auto entries = log.allEntries(store);
  EXPECT_THAT(summariesOf(entries),
              ElementsAre("1750000000 0 Papers/plan.odt 1749999990 ",
                          "1750000005 1750000000 Papers/plan.odt 1750000001.5 eve@gamma.lan",
                          "1750000005 1749999000 say \"hi\", Zoë.txt 0 bob@beta.local"));
  EXPECT_EQ(&entries[0]->userId(), &internedUserId("bob@beta.local"));
  EXPECT_EQ(&entries[0]->pathRecord(), &entries[1]->pathRecord());
  const std::size_t secondLine = Golden.find('\n') + 1;
  EXPECT_EQ(log.entriesFromOffset(secondLine, store).size(), 2U);
  EXPECT_TRUE(log.entriesFromOffset(Golden.size(), store).empty());
  EXPECT_TRUE(log.entriesFromOffset(Golden.size() + 100, store).empty());
}

TEST_F(KDLogFileTest, refusesEntriesOlderThanItsLast) {
  KDLogFile log = file();
  log.appendEntry(entry(100, 0, "a", 1));
  log.appendEntry(entry(100, 0, "b", 1));
  EXPECT_THAT([&] { log.appendEntry(entry(99, 0, "c", 1)); },
              ThrowsMessage<InconsistencyError>(
                  "Invalid parameter not satisfying: [entry logTime]>=lastLogTime"));
}

TEST_F(KDLogFileTest, keepsEntriesThatCouldNotBeWritten) {
  Delegate delegate;
  KDLogFile log = file(&delegate);
  appendGolden(log);
  files.faults.failAt(1, "append");
  EXPECT_FALSE(log.synchronizeFile());
  files.remove(path());
  EXPECT_FALSE(log.synchronizeFile());
  EXPECT_TRUE(this->log.contains("Warning! Unable to open log file at 'bob@beta.local.fplog'"));
  EXPECT_EQ(delegate.changes, 0);
  write("");
  EXPECT_TRUE(log.synchronizeFile());
  EXPECT_EQ(bytes(), Golden);
  EXPECT_EQ(delegate.changes, 1);
}

TEST_F(KDLogFileTest, endsACutOffLineBeforeItAppends) {
  const auto whole = summariesOf(read(Golden).entries);
  const std::string line = Golden.substr(0, Golden.find('\n', Golden.find('\n') + 1));
  for (std::size_t length = line.rfind('\n') + 2; length <= line.size(); ++length) {
    const std::string cut = line.substr(0, length);
    write(cut);
    KDLogFile log = file();
    log.appendEntry(entry(1750000009, 0, "next", 5));
    ASSERT_TRUE(log.synchronizeFile());
    ASSERT_EQ(bytes(), cut + "\n\"1750000009\",\"0\",\"next\",\"5\",\"\",\"\"\n");
    const auto found = log.readTolerantly(0, store).value();
    std::vector<std::string> expected = {whole[0], "1750000009 0 next 5 "};
    // Only the empty comment may be missing.
    if (found.rowsSkipped == 0) expected.insert(expected.begin() + 1, whole[1]);
    ASSERT_EQ(summariesOf(found.entries), expected) << cut;
    ASSERT_EQ(found.rowsSkipped == 0, length >= line.size() - 3 && length != line.size() - 1)
        << cut;
  }
}

TEST_F(KDLogFileTest, givesTheFileALaterTimeWithEveryFlush) {
  KDLogFile log = file();
  std::int64_t last = files.attributesOf(path())->modTime;
  for (int flush = 0; flush < 3; ++flush) {  // all within one second
    log.appendEntry(entry(1750000000, 0, "a", 1));
    ASSERT_TRUE(log.synchronizeFile());
    const std::int64_t time = files.attributesOf(path())->modTime;
    EXPECT_GT(time, last);
    last = time;
  }
  clock.advance(100);
  log.appendEntry(entry(1750000000, 0, "a", 1));
  ASSERT_TRUE(log.synchronizeFile());
  EXPECT_EQ(files.attributesOf(path())->modTime, 1750000100);
}

TEST_F(KDLogFileTest, writesThroughAFileReplacedMeanwhile) {
  KDLogFile log = file();
  files.save(path(), Golden);
  log.appendEntry(entry(1750000009, 0, "next", 5));
  ASSERT_TRUE(log.synchronizeFile());
  EXPECT_EQ(log.allEntries(store).size(), 4U);
}

TEST_F(KDLogFileTest, opensNothingThatIsNoFile) {
  files.makeLink("/logs/eve@gamma.lan.fplog", "/etc/passwd");
  KDLogFile link(*folder, "eve@gamma.lan.fplog", nullptr, log);
  EXPECT_TRUE(log.contains("Warning! Unable to open log file at 'eve@gamma.lan.fplog'"));
  EXPECT_TRUE(link.allEntries(store).empty());
  EXPECT_FALSE(link.readTolerantly(0, store));
  KDLogFile regular = file();
  EXPECT_FALSE(regular.open());
  EXPECT_FALSE(regular.close());
  EXPECT_TRUE(regular.open());
}

TEST_F(KDLogFileTest, deliversWholeLinesOfEveryTruncation) {
  std::vector<std::size_t> ends = {0};
  for (std::size_t index = 0; index < Golden.size(); ++index) {
    if (Golden[index] == '\n') ends.push_back(index + 1);
  }
  const auto all = summariesOf(read(Golden).entries);
  for (std::size_t length = 0; length <= Golden.size(); ++length) {
    const auto summary = read(Golden.substr(0, length));
    const auto whole = std::upper_bound(ends.begin(), ends.end(), length) - ends.begin() - 1;
    ASSERT_EQ(summariesOf(summary.entries), (std::vector(all.begin(), all.begin() + whole)));
    ASSERT_EQ(summary.endOffset, ends[whole]) << length;
    ASSERT_EQ(summary.rowsSkipped, 0U);
    // What was not consumed is read when the rest has come.
    ASSERT_EQ(read(Golden, summary.endOffset).entries.size(), all.size() - whole);
  }
}

TEST_F(KDLogFileTest, readsALastLineWithoutLineFeedOnlyInItsOwnUsersName) {
  write(Golden.substr(0, Golden.size() - 1));
  KDLogFile log = file();
  EXPECT_EQ(log.allEntries(store).size(), 3U);
  EXPECT_EQ(log.readTolerantly(0, store)->entries.size(), 2U);
}

struct DamagedLine {
  const char* what;
  std::string line;
  const char* thrown;  ///< by the strict reading; null where it leaves the line out
};

TEST_F(KDLogFileTest, losesNothingButTheDamagedLine) {
  const std::string before = "\"100\",\"0\",\"before\",\"1\",\"\",\"\"\n";
  const std::string after = "\"200\",\"100\",\"after\",\"2\",\"\",\"\"\n";
  const char* const badTime = "0 <= time < 2^40";
  const char* const openQuote = "[line] has matching quotes";
  const DamagedLine lines[] = {
      {"no number", "\"1x\",\"0\",\"a\",\"1\",\"\",\"\"", badTime},
      {"empty log time", "\"\",\"0\",\"a\",\"1\",\"\",\"\"", badTime},
      {"negative parent time", "\"150\",\"-1\",\"a\",\"1\",\"\",\"\"", badTime},
      {"infinite modification time", "\"150\",\"0\",\"a\",\"inf\",\"\",\"\"", badTime},
      {"not a number", "\"nan\",\"0\",\"a\",\"1\",\"\",\"\"", badTime},
      {"beyond all dates", "\"1099511627776\",\"0\",\"a\",\"1\",\"\",\"\"", badTime},
      {"beyond all doubles", "\"1e999\",\"0\",\"a\",\"1\",\"\",\"\"", badTime},
      {"digits beyond exactness", "\"99999999999999999999\",\"0\",\"a\",\"1\",\"\",\"\"", badTime},
      {"letters among eight digits", "\"175000:000\",\"0\",\"a\",\"1\",\"\",\"\"", badTime},
      {"as old as its parent", "\"150\",\"150\",\"a\",\"1\",\"\",\"\"", "aLogTime > aPLogTime"},
      {"older than its parent", "\"150\",\"151\",\"a\",\"1\",\"\",\"\"", "aLogTime > aPLogTime"},
      {"two fields", "\"150\",\"0\"", "[components count] >= 5"},
      {"four fields", "\"150\",\"0\",\"a\",\"1\"", "[components count] >= 5"},
      {"cut before the parent user", "\"150\",\"0\",\"a\",\"1\",", "[components count] >= 5"},
      {"one field", "rubbish", nullptr},
      {"open quote in the path", "\"150\",\"0\",\"a,1,,", openQuote},
      {"open quote at the end", "\"150\",\"0\",\"a\",\"1\",\"\",\"", openQuote},
      {"a quote alone", "\"", openQuote},
      {"too long", "\"150\",\"0\",\"" + std::string(LogReader::LongestLine, 'a') + "\"",
       "[components count] >= 5"},
      {"parent user with bad UTF-8", "\"150\",\"0\",\"a\",\"1\",\"\xFF\",\"\"",
       "user id can name a log"},
      {"parent user of any length",
       "\"150\",\"0\",\"a\",\"1\",\"" + std::string(256, 'u') + "\",\"\"",
       "user id can name a log"},
      {"path that leaves the folder", "\"150\",\"0\",\"../a\",\"1\",\"\",\"\"", nullptr},
      {"path into our own data", "\"150\",\"0\",\".zolvar/todos.plist\",\"1\",\"\",\"\"", nullptr},
      {"path with bad UTF-8", "\"150\",\"0\",\"a\xFF\",\"1\",\"\",\"\"", nullptr},
      {"path with a carriage return", "\"150\",\"0\",\"a\rb\",\"1\",\"\",\"\"", nullptr},
      {"path with a NUL", std::string("\"150\",\"0\",\"a\0b\",\"1\",\"\",\"\"", 25), nullptr},
      {"no path", "\"150\",\"0\",\"\",\"1\",\"\",\"\"", nullptr},
  };
  for (const DamagedLine& damaged : lines) {
    const auto summary = read(before + damaged.line + "\n" + after);
    EXPECT_THAT(summariesOf(summary.entries),
                ElementsAre("100 0 before 1 ", "200 100 after 2 bob@beta.local"))
        << damaged.what;
    EXPECT_EQ(summary.rowsSkipped, 1U) << damaged.what;
    EXPECT_EQ(summary.bytesSkipped, damaged.line.size() + 1) << damaged.what;
    EXPECT_EQ(summary.endOffset, bytes().size()) << damaged.what;
    if (damaged.thrown == nullptr) {
      EXPECT_EQ(file().allEntries(store).size(), 2U) << damaged.what;
    } else {
      EXPECT_THROW(
          {
            try {
              (void)file().allEntries(store);
            } catch (const InconsistencyError& error) {
              if (damaged.line.size() < LogReader::LongestLine) {
                EXPECT_THAT(error.what(), testing::HasSubstr(damaged.thrown)) << damaged.what;
              }
              throw;
            }
          },
          InconsistencyError)
          << damaged.what;
    }
  }
  EXPECT_TRUE(log.contains("components count < 4: is [\"150\", \"0\", \"a\", \"1\"]"));
  EXPECT_TRUE(log.contains("Left out 1 entries of 'bob@beta.local.fplog' with unusable paths."));
}

TEST_F(KDLogFileTest, takesWhatTheFormatAllows) {
  const auto summary = read(
      "\n"
      "100,0, bare ,1.25,,\n"                 // no quotes
      "\"100\",\"0\",\"short\",\"1\",\"\"\n"  // no comment
      "\"101\",\"0\",\"a\",\"1\",\"\",\"comment\",\"later field\"\n"
      "\"102\",\"0\",\"a\",\"1\",\"\",\"\"\r\n"  // edited elsewhere
      "\"103.5\",\"102\",\"a\",\"1e3\",\"\",\"\"\n");
  EXPECT_THAT(summariesOf(summary.entries),
              ElementsAre("100 0 bare 1.25 ", "100 0 short 1 ", "101 0 a 1 ", "102 0 a 1 ",
                          "103.5 102 a 1000 bob@beta.local"));
  EXPECT_EQ(summary.rowsSkipped, 0U);
}

TEST_F(KDLogFileTest, readsLinesAcrossPieces) {
  std::string bytes;
  std::size_t lines = 0;
  while (bytes.size() < 2 * LogReader::PieceSize) {
    bytes += csvString({timeText(static_cast<double>(++lines)), "0",
                        std::string(lines % 250 + 1, 'p') + "/f", "1", "", ""}) +
             "\n";
  }
  const auto summary = read(bytes);
  ASSERT_EQ(summary.entries.size(), lines);
  for (std::size_t line = 0; line < lines; ++line) {
    ASSERT_EQ(summary.entries[line]->logTime(), static_cast<double>(line + 1));
    ASSERT_EQ(summary.entries[line]->path().size(), (line + 1) % 250 + 3);
  }
}

TEST_F(KDLogFileTest, letsALineOfManyMegabytesGo) {
  const std::string endless = "\"" + std::string(3 * LogReader::PieceSize, 'x');
  const auto unfinished = read(Golden + endless);
  EXPECT_EQ(unfinished.entries.size(), 3U);
  EXPECT_EQ(unfinished.endOffset, Golden.size());
  const auto finished = read(Golden + endless + "\n" + Golden);
  EXPECT_EQ(finished.entries.size(), 6U);
  EXPECT_EQ(finished.rowsSkipped, 1U);
  EXPECT_EQ(finished.bytesSkipped, endless.size() + 1);
  EXPECT_EQ(finished.endOffset, bytes().size());
}

TEST_F(KDLogFileTest, tellsThatAReadWasCutOff) {
  write(Golden);
  KDLogFile log = file();
  files.faults.failAt(1, "readPiece");
  const auto cut = log.readTolerantly(0, store);
  ASSERT_FALSE(cut);
  EXPECT_EQ(cut.error().kind, FailureKind::Transient);
}

TEST_F(KDLogFileTest, givesALogOfAnImpossibleUserNoEntries) {
  files.write("/logs/bob@beta.fplog.fplog", Golden);
  KDLogFile odd(*folder, "bob@beta.fplog.fplog", nullptr, log);
  EXPECT_EQ(odd.readTolerantly(0, store)->rowsSkipped, 3U);
  EXPECT_THROW((void)odd.allEntries(store), InconsistencyError);
}

/// A log file and a list of lines live through the same random events; after each of them a reader
/// with a remembered offset must have met exactly the lines of the list.
TEST_F(KDLogFileTest, neverLosesALineThroughAnyEvents) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  const std::vector<std::string> names = {"a", "Papers/b, c", "say \"hi\"", "\"",
                                          ",", "Zoë/😀",       " blank "};
  auto writer = std::make_unique<KDLogFile>(*folder, Name, nullptr, log);
  double time = 1000;
  std::vector<std::string> expected;
  std::vector<std::string> buffered;
  std::vector<std::string> seen;
  std::uint64_t offset = 0;
  for (int step = 0; step < 600; ++step) {
    switch (random() % 8) {
      case 0:
      case 1:
      case 2: {
        time += random() % 3;
        auto* made = entry(time, random() % 2 == 0 ? 0 : time - 1 - random() % 5 * 0.25,
                           names[random() % names.size()].c_str(), random() % 3 * 0.1,
                           "bob@beta.local", random() % 2 == 0 ? "eve@gamma.lan" : "");
        writer->appendEntry(made);
        buffered.push_back(summaryOf(*made));
        break;
      }
      case 3:
      case 4:
        if (random() % 4 == 0) files.faults.failAt(1, "append");
        if (writer->synchronizeFile()) {
          expected.insert(expected.end(), buffered.begin(), buffered.end());
          buffered.clear();
        }
        files.faults.clear();
        break;
      case 5:  // the process ends; what it had not written is gone
        writer = std::make_unique<KDLogFile>(*folder, Name, nullptr, log);
        buffered.clear();
        break;
      case 6: {                                                   // a write that was cut off
        const std::size_t fifthField = Golden.find(",\"\"") + 2;  // a longer piece is an entry
        const std::string cut = Golden.substr(0, random() % fifthField + 1);
        if (bytes().ends_with('\n')) write(bytes() + cut);
        break;
      }
      default: {
        const auto read = writer->readTolerantly(offset, store).value();
        for (const auto& text : summariesOf(read.entries)) seen.push_back(text);
        offset = read.endOffset;
        ASSERT_EQ(seen, expected);
        break;
      }
    }
  }
}

}  // namespace
}  // namespace zolvar
