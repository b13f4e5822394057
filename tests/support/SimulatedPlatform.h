#pragma once

#include <memory>
#include <string>

#include "platform/Platform.h"
#include "support/MemoryDefaults.h"
#include "support/RecordingLog.h"
#include "support/SimulatedClock.h"
#include "support/SimulatedDesktop.h"
#include "support/SimulatedFileSystem.h"
#include "support/SimulatedLanes.h"
#include "support/SimulatedNetwork.h"
#include "support/SimulatedProcesses.h"
#include "support/SimulatedRandom.h"
#include "support/SimulatedRunLoop.h"

namespace zolvar {

/// What the hosts of one test have in common: the time, the queue of events and the cables.
struct SimulatedWorld {
  SimulatedClock clock;
  SimulatedRunLoop loop{clock};
  SimulatedNetwork network{loop};
};

/// One host: a stand-in for each service that the engine takes, public for the test's use. Alone it
/// brings its own world; several hosts share one, which must outlive them.
class SimulatedPlatform {
 public:
  explicit SimulatedPlatform(const std::string& host = "alpha", const std::string& user = "user")
      : SimulatedPlatform(std::make_unique<SimulatedWorld>(), nullptr, host, user) {}
  SimulatedPlatform(SimulatedWorld& world, const std::string& host,
                    const std::string& user = "user")
      : SimulatedPlatform(nullptr, &world, host, user) {}

  Platform& platform() { return platform_; }
  operator Platform&() { return platform_; }  // NOLINT: a host stands for its platform

 private:
  SimulatedPlatform(std::unique_ptr<SimulatedWorld> own, SimulatedWorld* shared,
                    const std::string& host, const std::string& user)
      : ownWorld_(std::move(own)),
        world(shared != nullptr ? *shared : *ownWorld_),
        hostName(host),
        clock(world.clock, 0),
        loop(world.loop),
        lanes(loop),
        log(host),
        files(clock, loop),
        processes(*this, host),
        services(world.network, host),
        hosts(world.network, host, user) {}
  std::unique_ptr<SimulatedWorld> ownWorld_;

 public:
  SimulatedWorld& world;
  std::string hostName;
  SimulatedClock clock;  ///< this host's view of the time; step() makes it differ
  SimulatedRunLoop loop;
  SimulatedLanes lanes;
  SimulatedRandom random;
  RecordingLog log;
  MemoryDefaults defaults;
  SimulatedFileSystem files;
  SimulatedProcesses processes;
  SimulatedServiceDirectory services;
  SimulatedHosts hosts;
  SimulatedSecretStore secrets;
  SimulatedWorkspace workspace;
  SimulatedNetworkWatch networkWatch;
  SimulatedFirewall firewall{loop};

 private:
  Platform platform_{clock, random,  loop,     lanes,     files,        processes, services,
                     hosts, secrets, defaults, workspace, networkWatch, firewall,  log};
};

}  // namespace zolvar
