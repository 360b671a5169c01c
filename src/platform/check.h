// Assertions for our own mistakes. They stay on in release builds; a stranger's
// bytes never reach one.

#pragma once

#include <cstdio>
#include <cstdlib>

namespace varnok {

[[noreturn]] inline void checkFailed(const char* what, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, what);
  std::abort();
}

}  // namespace varnok

#define VARNOK_CHECK(condition) ((condition) ? void() : ::varnok::checkFailed(#condition, __FILE__, __LINE__))
#define VARNOK_UNREACHABLE() ::varnok::checkFailed("unreachable", __FILE__, __LINE__)
