#include "util/hexHash.h"

#include <fmt/format.h>

namespace zolvar {

std::string hexHash(std::string_view text) { return fmt::format("{:08x}", stringHash(text)); }

}  // namespace zolvar
