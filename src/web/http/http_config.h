// What an HTTPServer serves and the bounds that it keeps. Value types.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace varnok {

class HTTPStaticFiles;

struct HTTPLimits {
  // Bytes.
  std::size_t requestLine = 8'192;
  std::size_t head = 32'768;  // Request line, fields and the line ends.
  std::size_t fields = 100;
  std::uint64_t skippedBody = 65'536;  // Of a method that takes none.
  std::size_t firstPiece = 16'384;     // A body's first piece has this size, or is the whole body.

  // When one more comes, the connection that has waited longest for a request is
  // closed, of the address that holds most.
  std::size_t connections = 512;

  std::chrono::milliseconds wholeHead{20'000};
  std::chrono::milliseconds idle{60'000};          // Between two requests.
  std::chrono::milliseconds betweenBytes{30'000};  // Of a body.
  std::chrono::milliseconds bodyGrace{60'000};     // After this a body must have come at bodyRate.
  std::uint64_t bodyRate = 500;                    // Bytes per second.
  std::chrono::milliseconds writeProgress{30'000};
  std::chrono::milliseconds linger{2'000};  // For the rest of a request that was refused, so that the answer arrives.
};

struct HTTPConfig {
  std::string documentRoot = {};            // Absolute, without "." and "..", without a slash at its end.
  std::vector<std::string> hostNames = {};  // Names of this machine, beside localhost; lower case.
  HTTPLimits limits = {};
  std::shared_ptr<HTTPStaticFiles> files = nullptr;  // Of the document root. Null: files are opened by path.
};

}  // namespace varnok
