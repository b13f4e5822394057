#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace zolvar {

/// An MD5 or SHA-1 digest fed piece by piece (OpenSSL's EVP). Caller synchronises.
class QMDigest {
 public:
  enum class Algorithm { MD5, SHA1 };

  explicit QMDigest(Algorithm algorithm);
  ~QMDigest();
  QMDigest(QMDigest&&) noexcept;
  QMDigest& operator=(QMDigest&&) noexcept;

  void update(std::string_view bytes);
  void updateLittleEndian(std::uint32_t value);  ///< feeds four bytes
  /// The raw digest (16 or 20 bytes). The object is spent afterwards.
  [[nodiscard]] std::string finish();

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

}  // namespace zolvar
