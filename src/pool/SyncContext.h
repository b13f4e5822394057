#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/Lanes.h"
#include "pool/KDPoolSync.h"
#include "pool/ListingLine.h"
#include "pool/PoolSyncSteps.h"
#include "pool/TransferRun.h"
#include "pool/VersionStore.h"

namespace zolvar {

/// What every sync of one pool works with. Owned by KDPoolSync; the transfer lane.
struct SyncContext {
  Platform& platform;
  std::shared_ptr<Lane> stateLane;
  std::shared_ptr<PoolSyncSteps> steps;
  KDPoolSync::ProgressSink progress;
  TransferRun run;
  VersionStore versions;

  /// Does `job` on the state lane, waits for it and hands back what it returns.
  template <class Job>
  auto onState(Job&& job) {
    using Answer = std::invoke_result_t<Job, PoolSyncSteps&>;
    if constexpr (std::is_void_v<Answer>) {
      stateLane->run([&] { job(*steps); });
    } else {
      std::optional<Answer> answer;
      stateLane->run([&] { answer.emplace(job(*steps)); });
      return std::move(*answer);
    }
  }

  /// False once the pool was left or the sync was told to end.
  bool goesOn() {
    return !run.isTerminated() && !onState([](PoolSyncSteps& state) { return state.isDetached(); });
  }

  /// Lists what the URL names; the listing's status. Lines that are none are passed over.
  int list(const std::string& url, const std::string& password,
           const std::function<void(const ListingLine&)>& visit) {
    TransferRun::Request request;
    request.arguments = listingArguments(url);
    request.password = password;
    request.line = [&visit](std::string_view line) {
      if (const auto parsed = parseListingLine(line)) visit(*parsed);
    };
    return run.run(request);
  }
};

/// The tool's input for a copy run: one path a line.
template <class Paths>
std::string copyInput(const Paths& paths) {
  std::string input;
  for (const std::string& path : paths) input.append(path).push_back('\n');
  return input;
}

}  // namespace zolvar
