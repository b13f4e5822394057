#include "app/ControlViews.h"

namespace zolvar::views {

using nlohmann::json;

namespace {

const char* standingWord(Contact::Standing standing) {
  switch (standing) {
    case Contact::Standing::Seen:
      return "seen";
    case Contact::Standing::Reachable:
      return "reachable";
    case Contact::Standing::Unreachable:
      return "unreachable";
  }
  return "";
}

}  // namespace

json view(const PoolInfo& info) {
  return {{"name", info.name},
          {"displayName", info.displayName},
          {"addresses", info.isAddressFolder},
          {"state", info.state.text},
          {"stateWord", stateWord(info.state.kind)},
          {"pausedUntil", info.pausedUntil ? json(*info.pausedUntil) : json()},
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
          {"passwordRequired", info.passwordRequired},
          {"contact", standingWord(info.contact.standing)},
          {"reason", info.contact.reason}};
}

json view(const StoredVersion& version) {
  return {{"id", version.id},
          {"when", whenText(version.keptAt)},
          {"keptAt", version.keptAt},
          {"modTime", version.modTime},
          {"size", version.size}};
}

json view(const OutcomeNotice& notice) {
  json view = {{"notice", notice.name},
               {"name", notice.poolName},
               {"title", notice.title},
               {"text", notice.description},
               {"sticky", notice.isSticky}};
  if (notice.click) view["path"] = notice.click->fileName;
  return view;
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
  json folders = json::array();
  for (const auto& [name, state] : status.folders) {
    folders.push_back(
        {{"name", name}, {"state", state.text}, {"stateWord", stateWord(state.kind)}});
  }
  return {{"folders", std::move(folders)},
          {"pausedUntil", status.pausedUntil ? json(*status.pausedUntil) : json()},
          {"userId", status.userId},
          {"port", status.port ? json(*status.port) : json()},
          {"version", status.version},
          {"daemonRunning", status.port.has_value()},
          {"started", status.isStarted},
          {"syncing", std::move(syncing)}};
}

json view(const SyncOutcome& outcome) {
  json failed = json::array();
  for (const auto& problem : outcome.failed) {
    failed.push_back({{"participant", problem.participant}, {"error", problem.error}});
  }
  return {{"synced", outcome.synced}, {"failed", std::move(failed)}, {"missing", outcome.missing}};
}

}  // namespace zolvar::views
