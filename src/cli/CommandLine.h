#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <variant>

namespace zolvar {

/// What a `zolvar` call asks for: the request for the running program and how to show its answer.
struct Invocation {
  nlohmann::json request;      ///< {"command": ..., fields}
  bool json = false;           ///< print the answer's data as JSON
  bool readsPassword = false;  ///< "password" comes from standard input
  [[nodiscard]] std::string command() const { return request.at("command"); }
};

/// The call was answered by its parsing alone: help or version (0), or wrong usage (2).
struct EarlyExit {
  int code = 0;
};

/// Reads the command line; prints help, the version or what is wrong with the usage. Paths of
/// folders become absolute here, since the running program has another current directory.
std::variant<Invocation, EarlyExit> parseCommandLine(int argc, char** argv);

}  // namespace zolvar
