#include "util/QMDigest.h"

#include <openssl/evp.h>

#include <array>
#include <new>

#include "util/InconsistencyError.h"

namespace zolvar {

struct QMDigest::Context {
  struct Free {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };
  std::unique_ptr<EVP_MD_CTX, Free> evp{EVP_MD_CTX_new()};
};

QMDigest::QMDigest(Algorithm algorithm) : context_(std::make_unique<Context>()) {
  if (!context_->evp) throw std::bad_alloc();
  const EVP_MD* kind = algorithm == Algorithm::MD5 ? EVP_md5() : EVP_sha1();
  require(EVP_DigestInit_ex(context_->evp.get(), kind, nullptr) == 1, "digest is available");
}

QMDigest::~QMDigest() = default;
QMDigest::QMDigest(QMDigest&&) noexcept = default;
QMDigest& QMDigest::operator=(QMDigest&&) noexcept = default;

void QMDigest::update(std::string_view bytes) {
  require(context_ != nullptr, "digest is not finished");
  require(EVP_DigestUpdate(context_->evp.get(), bytes.data(), bytes.size()) == 1,
          "digest takes the bytes");
}

void QMDigest::updateLittleEndian(std::uint32_t value) {
  std::array<char, 4> bytes;
  for (char& byte : bytes) {
    byte = static_cast<char>(value & 0xFFU);
    value >>= 8U;
  }
  update({bytes.data(), bytes.size()});
}

std::string QMDigest::finish() {
  require(context_ != nullptr, "digest is not finished");
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
  unsigned length = 0;
  require(EVP_DigestFinal_ex(context_->evp.get(), digest.data(), &length) == 1,
          "digest can be finished");
  context_.reset();
  return {digest.begin(), digest.begin() + length};
}

}  // namespace zolvar
