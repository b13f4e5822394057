#include "app/LogReporter.h"

#include "platform/Log.h"

namespace zolvar {

void LogReporter::serverDidChange(bool running, const std::string& trouble) {
  if (!trouble.empty() && trouble != serverTrouble_) log_.error("{}", trouble);
  serverTrouble_ = trouble;
  log_.debug("The transfer daemon {}.", running ? "runs" : "does not run");
}

}  // namespace zolvar
