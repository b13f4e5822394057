#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/ProcessLauncher.h"
#include "support/SimulatedFileSystem.h"

namespace zolvar {

/// What can happen to a client run of the transfer tool. Set on SimulatedProcesses; what is marked
/// (once) is spent by the next run that reaches it.
struct TransferTroubles {
  double secondsPerRun = 0;
  double secondsPerFile = 0;
  std::optional<std::size_t> cutAfterFiles;    ///< the connection breaks: status 12 (once)
  std::optional<std::size_t> killAfterFiles;   ///< SIGKILL inside the next file: leftover (once)
  std::optional<std::size_t> stallAfterFiles;  ///< no byte moves any more (once)
  std::optional<int> nextStatus;               ///< ends at once with this status (once)
  bool escapesUtf8 = false;                    ///< lists names as in a locale without UTF-8
  /// Called between the tool's look at the local file and its replacing it.
  std::function<void(const std::string& path)> duringFile;
};

/// One argument list, understood. Lists that the engine never passes throw std::logic_error.
struct TransferOrder {
  enum class Kind { LogLoad, Listing, Copy };
  Kind kind = Kind::Listing;
  bool updatesOnly = false;
  std::string backupFolder;
  std::string user;
  std::string host;
  unsigned port = 0;
  std::string module;
  bool isMetadataOnly = false;  ///< the module path goes on with "/.Zolvar"
  std::string destination;

  static TransferOrder parse(const std::vector<std::string>& arguments);
};

/// The lines of a listing of `folder`, whose name in the listing is `name` ("." for a module root).
std::string listingText(const SimulatedTree::Node& folder, const std::string& name,
                        bool escapesUtf8);

/// The receiving side of one run: the tool's rules about what it replaces, makes, skips and saves.
/// Files come with new inodes and the sender's times; directories get their times at the end.
class TransferReceiver {
 public:
  TransferReceiver(SimulatedTree& tree, const TransferOrder& order, TransferTroubles& troubles);

  /// The tool's own trouble with the destination as a whole; 0 when it is there.
  int openDestination();
  /// Brings one item; false when it was a regular file that was really transferred.
  enum class Outcome { Skipped, Transferred, Failed, Killed };
  Outcome receive(const std::string& path, const SimulatedTree::Node& source);
  void finish();  ///< sets the directories' times
  std::string errors;

 private:
  Outcome receiveFile(const std::string& path, const SimulatedNode& source);
  Outcome receiveLink(const std::string& path, const SimulatedNode& source);
  Outcome receiveDirectory(const std::string& path, const SimulatedNode& source);
  bool makeRoom(const SimulatedTree::Place& place, const std::string& path);
  void backUp(const SimulatedTree::Place& place, const std::string& path);
  Outcome failed(const std::string& path, const std::string& reason);

  SimulatedTree& tree_;
  const TransferOrder& order_;
  TransferTroubles& troubles_;
  SimulatedTree::Node root_;
  std::map<std::string, std::int64_t> directoryTimes_;
};

}  // namespace zolvar
