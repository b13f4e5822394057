#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/ProcessLauncher.h"

namespace zolvar {

/// Plays the transfer tool from a script: each start takes the next act, and what was asked of it
/// is kept. Differs from a real launcher: an act happens inside wait, and nothing else is known.
class ScriptedLauncher : public ProcessLauncher {
 public:
  struct Act {
    int status = 0;
    std::string output = {};
    std::string errors = {};
    bool silenced = false;
    std::function<void()> during = {};  ///< while the process runs
  };

  std::deque<Act> script;  ///< when it is over: Act{}
  std::vector<ProcessRequest> requests;
  std::vector<SilenceLimits> limits;
  bool isInstalled = true;
  bool canStart = true;

  Result<std::shared_ptr<Process>> start(const ProcessRequest& request) override {
    if (!canStart) return fail(FailureKind::Transient, "start", request.program);
    requests.push_back(request);
    Act act;
    if (!script.empty()) {
      act = std::move(script.front());
      script.pop_front();
    }
    return std::make_shared<Actor>(*this, std::move(act));
  }
  [[nodiscard]] Result<std::string> clientToolPath() const override {
    if (!isInstalled) return fail(FailureKind::Absent, "find", "zolvar");
    return std::string("/libexec/zolvar/zolvar");
  }
  [[nodiscard]] std::vector<std::string> commandLine(int) const override { return {}; }
  bool signal(int, int) override { return false; }
  bool waitGone(int, double) override { return true; }
  [[nodiscard]] bool canBind(unsigned) const override { return true; }

 private:
  class Actor : public Process {
   public:
    Actor(ScriptedLauncher& launcher, Act act) : launcher_(launcher), act_(std::move(act)) {}
    [[nodiscard]] int pid() const override { return 1; }
    void terminate() override { act_.status = 20; }
    ProcessEnd wait(const SilenceLimits& limits, const ProcessSinks& sinks) override {
      launcher_.limits.push_back(limits);
      if (act_.during) act_.during();
      // In pieces, so that lines are cut anywhere.
      for (std::size_t at = 0; at < act_.output.size(); at += 7)
        sinks.output(act_.output.substr(at, 7));
      for (std::size_t at = 0; at < act_.errors.size(); at += 5)
        sinks.errors(act_.errors.substr(at, 5));
      if (sinks.tick) sinks.tick();
      return {act_.status, act_.silenced};
    }

   private:
    ScriptedLauncher& launcher_;
    Act act_;
  };
};

}  // namespace zolvar
