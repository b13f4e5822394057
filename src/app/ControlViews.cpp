#include "app/ControlViews.h"

namespace zolvar::views {

using nlohmann::json;

json view(const PoolInfo& info) {
  return {{"name", info.name},
          {"folder", info.folder},
          {"active", info.phase == PoolPhase::Active},
          {"phase", phaseName(info.phase)},
          {"announced", info.isAnnounced},
          {"participants", info.participants},
          {"missing", info.missing},
          {"conflicts", info.conflicts},
          {"passwordRequired", info.passwordRequired},
          {"syncing", info.isSyncing},
          {"trouble", info.trouble}};
}

json view(const ParticipantInfo& info) {
  return {{"userId", info.address.userId()},
          {"host", info.address.hostName},
          {"port", info.address.port},
          {"local", info.isLocal},
          {"ignored", info.isIgnored},
          {"lastSync", info.lastSync},
          {"passwordRequired", info.passwordRequired}};
}

json view(const Conflict& conflict) {
  json versions = json::array();
  for (const auto& version : conflict.versions) {
    versions.push_back({{"id", version.id.text()},
                        {"userId", version.id.userId},
                        {"logTime", version.id.logTime},
                        {"modTime", version.modTime},
                        {"local", version.isLocal},
                        {"selectedBy", version.selectedBy}});
  }
  return {{"path", conflict.path}, {"versions", std::move(versions)}};
}

json view(const OpenQuestion& question) {
  return {{"name", question.poolName},
          {"id", question.question.id},
          {"paths", question.question.paths}};
}

json view(const TransferProgress& progress) {
  return {{"participant", progress.participant}, {"filesDone", progress.filesDone},
          {"filesWanted", progress.filesWanted}, {"bytesDone", progress.bytesDone},
          {"bytesWanted", progress.bytesWanted}, {"bytesPerSecond", progress.bytesPerSecond}};
}

json view(const ProgramStatus& status) {
  json syncing;
  if (status.sync) {
    syncing = {{"name", status.sync->poolName}, {"participant", status.sync->participant}};
    syncing["progress"] = status.sync->progress ? view(*status.sync->progress) : json();
  }
  return {{"userId", status.userId},     {"port", status.port ? json(*status.port) : json()},
          {"version", status.version},   {"daemonRunning", status.port.has_value()},
          {"started", status.isStarted}, {"syncing", std::move(syncing)}};
}

json view(const SyncOutcome& outcome) {
  json failed = json::array();
  for (const auto& problem : outcome.failed) {
    failed.push_back({{"participant", problem.participant}, {"error", problem.error}});
  }
  return {{"synced", outcome.synced}, {"failed", std::move(failed)}, {"missing", outcome.missing}};
}

}  // namespace zolvar::views
