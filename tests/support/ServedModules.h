#pragma once

#include <map>
#include <string>
#include <vector>

namespace zolvar {

/// What a daemon configuration says, as the real daemon understands it: names of parameters without
/// case and blanks, sections that differ only so joined, a later value replacing an earlier one.
/// Written apart from the engine's own reader on purpose. Parameters that the engine never writes
/// throw std::logic_error.
struct ServedModules {
  using Parameters = std::map<std::string, std::string>;
  Parameters global;
  std::vector<std::pair<std::string, Parameters>> sections;  ///< names as written

  static ServedModules parse(const std::string& text);
  [[nodiscard]] const Parameters* find(const std::string& name) const;
};

/// Whether a secrets file has the line "USER:PASSWORD".
bool secretsAccept(const std::string& secrets, const std::string& user,
                   const std::string& password);

}  // namespace zolvar
