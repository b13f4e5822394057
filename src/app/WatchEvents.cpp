#include "app/WatchEvents.h"

#include "app/Application.h"
#include "app/ControlViews.h"
#include "app/Operations.h"
#include "net/KDParticipant.h"

namespace zolvar {

using nlohmann::json;

WatchEvents::WatchEvents(Application& application, const Operations& operations, Sink sink)
    : application_(application), operations_(operations), sink_(std::move(sink)) {
  application_.addObserver(*this);
}

WatchEvents::~WatchEvents() { application_.removeObserver(*this); }

void WatchEvents::start() { poolListDidChange(); }

void WatchEvents::syncDidStart(KDFilePool& pool, const KDParticipant& participant) {
  sink_({{"event", "syncStarted"}, {"name", pool.name()}, {"participant", participant.userId()}});
}

void WatchEvents::syncDidEnd(const SyncReport& report) {
  progress_.erase(report.pool.name());
  sink_({{"event", "syncEnded"},
         {"name", report.pool.name()},
         {"participant", report.participant.userId()},
         {"status", report.status},
         {"error", report.errorMessage},
         {"files", report.loadedFiles}});
}

void WatchEvents::filesWereDeleted(KDFilePool& pool, const std::set<std::string>& paths) {
  sink_({{"event", "filesDeleted"}, {"name", pool.name()}, {"files", paths}});
}

void WatchEvents::conflictDidOccur(KDFilePool& pool, const std::string& path) {
  sink_({{"event", "conflict"}, {"name", pool.name()}, {"path", path}});
}

void WatchEvents::noticeWasPosted(const OutcomeNotice& notice) {
  json event = views::view(notice);
  event["event"] = "notice";
  sink_(event);
}

void WatchEvents::questionDidArise(KDFilePool& pool, const DeleteQuestion& question) {
  json event = views::view(OpenQuestion{pool.name(), question});
  event["event"] = "question";
  sink_(event);
}

void WatchEvents::passwordDidFail(KDFilePool& pool, KDParticipant& participant) {
  sink_(
      {{"event", "passwordFailed"}, {"name", pool.name()}, {"participant", participant.userId()}});
}

void WatchEvents::poolPathsNotAccessible(KDFilePool& pool) {
  sink_({{"event", "folderNotAccessible"}, {"name", pool.name()}, {"folder", pool.folderPath()}});
}

void WatchEvents::warning(const std::string& poolName, const std::string& sentence) {
  sink_({{"event", "warning"}, {"name", poolName}, {"text", sentence}});
}

void WatchEvents::poolDidChange(KDFilePool& pool) {
  tellProgress(pool);
  const auto* presence = application_.peer().presence(pool);
  if (presence == nullptr) return;
  json state = views::view(operations_.info(*presence));
  json& told = told_[pool.name()];
  if (told == state) return;
  told = state;
  sink_({{"event", "pool"}, {"pool", std::move(state)}});
}

void WatchEvents::poolListDidChange() {
  const auto& pools = application_.peer().filePoolsByName();
  std::erase_if(told_, [&](const auto& told) {
    if (pools.contains(told.first)) return false;
    sink_({{"event", "poolGone"}, {"name", told.first}});
    return true;
  });
  for (const auto& pool : application_.peer().filePools()) poolDidChange(*pool);
}

void WatchEvents::serverDidChange(bool running, const std::string& trouble) {
  sink_({{"event", "daemon"}, {"running", running}, {"trouble", trouble}});
}

void WatchEvents::tellProgress(KDFilePool& pool) {
  const auto progress = pool.progress();
  if (!progress) return;
  json view = views::view(*progress);
  json& told = progress_[pool.name()];
  if (told == view) return;
  told = view;
  sink_({{"event", "progress"}, {"name", pool.name()}, {"progress", std::move(view)}});
}

}  // namespace zolvar
