#pragma once

namespace zolvar {

class Clock;
class Random;
class RunLoop;
class Lanes;
class FileSystem;
class ProcessLauncher;
class ServiceDirectory;
class Hosts;
class SecretStore;
class UserDefaults;
class Workspace;
class NetworkWatch;
class Firewall;
class Log;

/// The world, handed to the engine: references to services that outlive it.
struct Platform {
  Clock& clock;
  Random& random;
  RunLoop& runLoop;
  Lanes& lanes;
  FileSystem& fileSystem;
  ProcessLauncher& processes;
  ServiceDirectory& services;
  Hosts& hosts;
  SecretStore& secrets;
  UserDefaults& defaults;
  Workspace& workspace;
  NetworkWatch& network;
  Firewall& firewall;
  Log& log;
  /// Runs syncs and state jobs on their caller: for tests and tools that want one thread.
  bool isTestModeActive = false;
};

}  // namespace zolvar
