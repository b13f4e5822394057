#include "platform/qt/SystemPlatform.h"

#include "platform/qt/DesktopWorkspace.h"
#include "platform/qt/InlineLanes.h"
#include "platform/qt/LinuxFirewall.h"
#include "platform/qt/NetlinkNetworkWatch.h"
#include "platform/qt/PosixFileSystem.h"
#include "platform/qt/PosixProcessLauncher.h"
#include "platform/qt/QSettingsDefaults.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/qt/SecretServiceStore.h"
#include "platform/qt/SystemClock.h"
#include "platform/qt/SystemHosts.h"
#include "platform/qt/SystemLog.h"
#include "platform/qt/SystemRandom.h"
#include "platform/qt/ThreadLanes.h"
#include "platform/qt/ThreadedServiceDirectory.h"

namespace zolvar {

/// In order of need: what stands above outlives what stands below.
struct SystemPlatform::Services {
  explicit Services(const Options& options)
      : log(options.programName, options.isDebug),
        runLoop(log),
        threadLanes(log),
        fileSystem(runLoop),
        services(runLoop, log),
        hosts(services, log),
        defaults(log),
        workspace(log),
        network(runLoop, log),
        firewall(runLoop) {
    log.setDebug(options.isDebug);
  }

  SystemLog log;
  SystemClock clock;
  SystemRandom random;
  QtRunLoop runLoop;
  ThreadLanes threadLanes;
  InlineLanes inlineLanes;
  PosixFileSystem fileSystem;
  PosixProcessLauncher processes;
  ThreadedServiceDirectory services;
  SystemHosts hosts;
  std::unique_ptr<SecretServiceStore> secrets;
  QSettingsDefaults defaults;
  DesktopWorkspace workspace;
  NetlinkNetworkWatch network;
  LinuxFirewall firewall;
  std::unique_ptr<Platform> platform;
};

Result<std::unique_ptr<SystemPlatform>> SystemPlatform::make(const Options& options) {
  auto all = std::make_unique<Services>(options);
  auto support = all->fileSystem.supportFolder();
  if (!support) return tl::unexpected(support.error());
  all->secrets = std::make_unique<SecretServiceStore>(*support, all->log);
  Lanes& lanes = options.isTestModeActive ? static_cast<Lanes&>(all->inlineLanes)
                                          : static_cast<Lanes&>(all->threadLanes);
  all->platform = std::make_unique<Platform>(
      Platform{all->clock, all->random, all->runLoop, lanes, all->fileSystem, all->processes,
               all->services, all->hosts, *all->secrets, all->defaults, all->workspace,
               all->network, all->firewall, all->log, options.isTestModeActive});
  return std::unique_ptr<SystemPlatform>(new SystemPlatform(std::move(all)));
}

SystemPlatform::SystemPlatform(std::unique_ptr<Services> services)
    : services_(std::move(services)) {}

SystemPlatform::~SystemPlatform() = default;

Platform& SystemPlatform::platform() { return *services_->platform; }

bool SystemPlatform::finish(double seconds) {
  services_->clock.shutDown();
  return services_->threadLanes.finishAll(seconds);
}

}  // namespace zolvar
