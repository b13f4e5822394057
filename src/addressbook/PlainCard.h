#pragma once

#include <string>
#include <string_view>

namespace zolvar {

/// The card written so that strict readers understand of it what ours does: without the transfer
/// encodings of 2.1 but for Base64 on one line, without quoted lists of types, in UTF-8. Lines that
/// every reader understands stay byte for byte. Any thread.
std::string plainCard(std::string_view card);

}  // namespace zolvar
