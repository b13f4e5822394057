#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace zolvar {

/// The installed transfer tool: a daemon on the loopback device over a temporary folder, and client
/// runs. For tests that compare a stand-in with it. Ends the daemon and removes the folder.
class RealTool {
 public:
  explicit RealTool(const std::string& modules);  ///< FOLDER in it stands for the temporary folder
  ~RealTool();
  RealTool(const RealTool&) = delete;
  RealTool& operator=(const RealTool&) = delete;

  [[nodiscard]] static bool isInstalled();
  [[nodiscard]] const std::string& folder() const { return folder_; }
  [[nodiscard]] unsigned port() const { return port_; }

  struct Ended {
    int status = -1;
    std::string output;
    std::string errors;
  };
  Ended run(const std::vector<std::string>& arguments, const std::string& input,
            const std::string& password) const;

 private:
  std::string folder_;
  unsigned port_ = 0;
  pid_t daemon_ = -1;
};

}  // namespace zolvar
