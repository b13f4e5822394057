#include "addressbook/Base64.h"

#include <openssl/bio.h>
#include <openssl/evp.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "util/InconsistencyError.h"

namespace zolvar {

namespace {

constexpr std::size_t PieceLength = 76;

struct FreeChain {
  void operator()(BIO* chain) const { BIO_free_all(chain); }
};

}  // namespace

std::string encodeBase64WithNewlines(std::string_view bytes, bool newlines) {
  require(bytes.size() <= std::numeric_limits<int>::max() / 2, "[self length] <= INT_MAX / 2");
  BIO* const filter = BIO_new(BIO_f_base64());
  if (!newlines) BIO_set_flags(filter, BIO_FLAGS_BASE64_NO_NL);
  BIO* const memory = BIO_new(BIO_s_mem());
  const std::unique_ptr<BIO, FreeChain> chain(BIO_push(filter, memory));
  if (!bytes.empty()) BIO_write(chain.get(), bytes.data(), static_cast<int>(bytes.size()));
  (void)BIO_flush(chain.get());
  char* text = nullptr;
  const long length = BIO_get_mem_data(memory, &text);
  return {text, static_cast<std::size_t>(std::max(length, 0L))};
}

void appendBase64ToString(std::string& text, std::string_view bytes,
                          const std::optional<std::string>& linePrefix) {
  const std::string encoded = encodeBase64WithNewlines(bytes, false);
  for (std::size_t start = 0; start < encoded.size(); start += PieceLength) {
    text += linePrefix.value_or("") + encoded.substr(start, PieceLength);
  }
}

}  // namespace zolvar
