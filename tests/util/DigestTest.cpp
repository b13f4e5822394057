#include <gtest/gtest.h>

#include "util/InconsistencyError.h"
#include "util/QMDigest.h"
#include "util/hexHash.h"

namespace zolvar {
namespace {

std::string hex(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += "0123456789abcdef"[static_cast<unsigned char>(byte) >> 4U];
    text += "0123456789abcdef"[static_cast<unsigned char>(byte) & 0xFU];
  }
  return text;
}

TEST(QMDigest, computesThePublishedExamplesPieceByPiece) {
  QMDigest md5(QMDigest::Algorithm::MD5);
  md5.update("message ");
  md5.update("");
  md5.update("digest");
  EXPECT_EQ(hex(md5.finish()), "f96b697d7cb7938d525a2f31aaf161d0");
  QMDigest sha1(QMDigest::Algorithm::SHA1);
  sha1.update("abc");
  EXPECT_EQ(hex(sha1.finish()), "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_THROW(sha1.update("more"), InconsistencyError);
}

TEST(QMDigest, feedsNumbersLowestByteFirst) {
  QMDigest number(QMDigest::Algorithm::MD5);
  number.updateLittleEndian(0x64636261);
  QMDigest text(QMDigest::Algorithm::MD5);
  text.update("abcd");
  EXPECT_EQ(number.finish(), text.finish());
}

TEST(hexHash, isTheSameOnEveryPeer) {
  EXPECT_EQ(hexHash(""), "811c9dc5");
  EXPECT_EQ(hexHash("a"), "e40c292c");
  EXPECT_EQ(hexHash("foobar"), "bf9cf968");
  EXPECT_EQ(hexHash("c\xC3\xB6"), hexHash("cö"));
}

}  // namespace
}  // namespace zolvar
