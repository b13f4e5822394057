#pragma once

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "app/ApplicationObserver.h"

namespace zolvar {

class Application;
class Operations;

/// Turns what happens into JSON objects for who watches: every notice, and the state of a pool or
/// of the program when it differs from what was told last. Observes the application from its making
/// to its destruction; application and operations outlive it. Main thread.
class WatchEvents : public ApplicationObserver {
 public:
  using Sink = std::function<void(const nlohmann::json& event)>;

  WatchEvents(Application& application, const Operations& operations, Sink sink);
  ~WatchEvents() override;
  WatchEvents(const WatchEvents&) = delete;
  WatchEvents& operator=(const WatchEvents&) = delete;

  /// Tells the present state of all pools.
  void start();

 private:
  void syncDidStart(KDFilePool& pool, const KDParticipant& participant) override;
  void syncDidEnd(const SyncReport& report) override;
  void filesWereDeleted(KDFilePool& pool, const std::set<std::string>& paths) override;
  void noticeWasPosted(const OutcomeNotice& notice) override;
  void conflictDidOccur(KDFilePool& pool, const std::string& path) override;
  void questionDidArise(KDFilePool& pool, const DeleteQuestion& question) override;
  void passwordDidFail(KDFilePool& pool, KDParticipant& participant) override;
  void poolPathsNotAccessible(KDFilePool& pool) override;
  void warning(const std::string& poolName, const std::string& sentence) override;
  void poolDidChange(KDFilePool& pool) override;
  void poolListDidChange() override;
  void serverDidChange(bool running, const std::string& trouble) override;
  void tellProgress(KDFilePool& pool);

  Application& application_;
  const Operations& operations_;
  Sink sink_;
  std::map<std::string, nlohmann::json> told_;      ///< last state told, by pool name
  std::map<std::string, nlohmann::json> progress_;  ///< last progress told, by pool name
};

}  // namespace zolvar
