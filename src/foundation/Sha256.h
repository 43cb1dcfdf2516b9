#pragma once

#include <memory>
#include <openssl/evp.h>
#include <string>

#include "foundation/Bytes.h"

namespace orvane {

/// The SHA-256 digest (FIPS 180-4) of some bytes, made by libcrypto.
class Sha256 {
 public:
  /// Throws Failure if the library cannot make it.
  Sha256();

  void add(ByteView bytes);

  /// The digest in hexadecimal, in lower case. To be called once.
  std::string inHexadecimal();

 private:
  struct Free {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };

  std::unique_ptr<EVP_MD_CTX, Free> context_;
};

}  // namespace orvane
