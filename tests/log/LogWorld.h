#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "log/KDLogFile.h"
#include "support/RecordingLog.h"
#include "support/SimulatedClock.h"
#include "support/SimulatedFileSystem.h"
#include "support/SimulatedRunLoop.h"

namespace zolvar {

/// A folder with logs in it, and a store to read them into.
struct LogWorld {
  static constexpr const char* Name = "bob@beta.local.fplog";
  static constexpr double Now = 1'750'000'000;

  SimulatedClock clock{Now};
  SimulatedRunLoop loop{clock};
  SimulatedFileSystem files{clock, loop};
  RecordingLog log;
  std::unique_ptr<Folder> folder;
  KDEntryStore store;

  LogWorld() {
    if (!files.makeFolder("/logs")) throw std::logic_error("no folder");
    folder = std::move(files.open("/logs").value());
  }
  void write(const std::string& bytes) { files.write(path(), bytes); }
  [[nodiscard]] std::string bytes() const { return files.readAll(path()).value_or("(no file)"); }
  [[nodiscard]] static std::string path() { return std::string("/logs/") + Name; }

  KDLogFile file(KDLogFileDelegate* delegate = nullptr) { return {*folder, Name, delegate, log}; }
  LogReadSummary read(const std::string& bytes, std::uint64_t offset = 0) {
    write(bytes);
    return file().readTolerantly(offset, store).value();
  }
  KDLogFileEntry* entry(double logTime, double plogTime, const char* path, double modTime,
                        const char* user = "bob@beta.local", const char* parentUser = "") {
    return store.add({logTime, plogTime, path, modTime, user, parentUser});
  }
};

/// "logTime plogTime path modTime parentUser", for comparisons that print well.
inline std::string summaryOf(const KDLogFileEntry& entry) {
  return timeText(entry.logTime()) + " " + timeText(entry.plogTime()) + " " +
         std::string(entry.path()) + " " + timeText(entry.modTime()) + " " + entry.puserId();
}

inline std::vector<std::string> summariesOf(const std::vector<KDLogFileEntry*>& entries) {
  std::vector<std::string> texts;
  for (const KDLogFileEntry* entry : entries) texts.push_back(summaryOf(*entry));
  return texts;
}

}  // namespace zolvar
