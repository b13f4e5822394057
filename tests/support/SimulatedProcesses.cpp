#include "support/SimulatedProcesses.h"

#include "support/SimulatedPlatform.h"

namespace zolvar {

SimulatedProcesses::SimulatedProcesses(SimulatedPlatform& host, std::string name)
    : host_(host), name_(std::move(name)) {
  host_.world.network.join(name_, *this);
}
SimulatedProcesses::~SimulatedProcesses() { host_.world.network.leave(name_); }

Result<std::shared_ptr<Process>> SimulatedProcesses::start(const ProcessRequest& request) {
  return fail(FailureKind::Absent, "start", request.program);
}
Result<std::string> SimulatedProcesses::clientToolPath() const {
  return std::string("/usr/libexec/zolvar/zolvar");
}
std::vector<std::string> SimulatedProcesses::commandLine(int /*pid*/) const { return {}; }
bool SimulatedProcesses::signal(int /*pid*/, int /*signalNumber*/) { return false; }
bool SimulatedProcesses::waitGone(int /*pid*/, double /*seconds*/) { return true; }
bool SimulatedProcesses::canBind(unsigned /*port*/) const { return true; }

}  // namespace zolvar
