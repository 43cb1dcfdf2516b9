#include "foundation/Sha256.h"

#include <array>
#include <openssl/crypto.h>

#include "foundation/Failure.h"

namespace orvane {
namespace {

void require(bool isDone) {
  if (!isDone) throw Failure("no SHA-256");
}

}  // namespace

// Nothing of the library's configuration applies, and the program may end while a thread reads.
Sha256::Sha256() {
  OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG | OPENSSL_INIT_NO_ATEXIT, nullptr);
  context_.reset(EVP_MD_CTX_new());
  require(context_ != nullptr && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1);
}

void Sha256::add(ByteView bytes) {
  require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) == 1);
}

std::string Sha256::inHexadecimal() {
  std::array<unsigned char, 32> digest{};
  require(EVP_DigestFinal_ex(context_.get(), digest.data(), nullptr) == 1);
  std::string text;
  for (const unsigned char byte : digest) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

}  // namespace orvane
