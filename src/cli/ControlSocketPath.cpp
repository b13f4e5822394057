#include "cli/ControlSocketPath.h"

#include <cstdlib>

namespace zolvar {

std::string controlSocketPath() {
  const auto absolute = [](const char* name) -> std::string {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? value : "";
  };
  if (const std::string runtime = absolute("XDG_RUNTIME_DIR"); !runtime.empty()) {
    return runtime + "/zolvar/control.sock";
  }
  if (const std::string home = absolute("HOME"); !home.empty()) {
    return home + "/.local/state/zolvar/control.sock";
  }
  return {};
}

}  // namespace zolvar
