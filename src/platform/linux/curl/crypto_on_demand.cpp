// libcrypto's functions as far as this folder calls them, for SHA-256 alone.
// Loaded when first needed, because its relocations are among the costliest of
// a start and most runs hash nothing. libcurl brings the library anyway.

#include <dlfcn.h>
#include <openssl/evp.h>

#include "platform/check.h"

namespace {

template <typename Function>
Function* find(const char* name) {
  static void* const library = dlopen("libcrypto.so.3", RTLD_NOW | RTLD_LOCAL);
  VARNOK_CHECK(library != nullptr);
  return reinterpret_cast<Function*>(dlsym(library, name));
}

#define FOUND(name)                                            \
  ([] {                                                        \
    static auto* const function = find<decltype(name)>(#name); \
    return function;                                           \
  }())

}  // namespace

EVP_MD_CTX* EVP_MD_CTX_new() {
  return FOUND(EVP_MD_CTX_new)();
}

void EVP_MD_CTX_free(EVP_MD_CTX* context) {
  FOUND(EVP_MD_CTX_free)(context);
}

const EVP_MD* EVP_sha256() {
  return FOUND(EVP_sha256)();
}

int EVP_DigestInit_ex(EVP_MD_CTX* context, const EVP_MD* type, ENGINE* engine) {
  return FOUND(EVP_DigestInit_ex)(context, type, engine);
}

int EVP_DigestUpdate(EVP_MD_CTX* context, const void* bytes, std::size_t count) {
  return FOUND(EVP_DigestUpdate)(context, bytes, count);
}

int EVP_DigestFinal_ex(EVP_MD_CTX* context, unsigned char* digest, unsigned* size) {
  return FOUND(EVP_DigestFinal_ex)(context, digest, size);
}

int EVP_Digest(const void* bytes, std::size_t count, unsigned char* digest, unsigned* size, const EVP_MD* type,
               ENGINE* engine) {
  return FOUND(EVP_Digest)(bytes, count, digest, size, type, engine);
}
