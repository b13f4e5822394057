#pragma once

#include "app/ApplicationObserver.h"

namespace zolvar {

class Log;

/// Writes what people would be told into the log: the only reporter where there is no desktop.
/// Warnings are left out, since whoever warns has logged them. The log outlives it. Main thread.
class LogReporter : public ApplicationObserver {
 public:
  explicit LogReporter(Log& log) : log_(log) {}

  void syncDidEnd(const SyncReport& report) override;
  void filesWereDeleted(KDFilePool& pool, const std::set<std::string>& paths) override;
  void conflictDidOccur(KDFilePool& pool, const std::string& path) override;
  void questionDidArise(KDFilePool& pool, const DeleteQuestion& question) override;
  void passwordDidFail(KDFilePool& pool, KDParticipant& participant) override;
  void serverDidChange(bool running, const std::string& trouble) override;

 private:
  Log& log_;
  std::string serverTrouble_;  ///< told last
};

}  // namespace zolvar
