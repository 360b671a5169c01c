#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "web/http/http_async_file_response.h"

namespace varnok {

// Replaces markers in text that comes in pieces. A marker is the separator, a
// key and the separator again. One whose key is not in the table stays as it is,
// and so does a separator without a second one. Holds back no more than the
// longest marker of the table.
class MarkerReplacer {
 public:
  using Replacements = std::map<std::string, std::string, std::less<>>;

  // An empty separator: nothing is replaced.
  MarkerReplacer(std::string separator, Replacements replacements);

  void replace(std::string_view piece, std::string& output);
  // The text is at its end.
  void finish(std::string& output);

 private:
  enum class Place { text, key, unknownKey };

  bool step(std::size_t& used, std::string& output);
  std::size_t passOn(std::string_view rest, std::string& output);

  std::string separator_;
  Replacements replacements_;
  std::size_t longestKey_ = 0;
  Place place_ = Place::text;
  std::string held_;  // Not decided yet. In `key` without the separator that opened it.
};

// A text file with markers, filled in while it is streamed; sent chunked.
class HTTPDynamicFileResponse : public HTTPAsyncFileResponse {
 public:
  HTTPDynamicFileResponse(const std::string& path, std::string separator, MarkerReplacer::Replacements replacements)
      : HTTPAsyncFileResponse(path), replacer_(std::move(separator), std::move(replacements)) {}

 protected:
  std::optional<std::uint64_t> length() const override { return std::nullopt; }
  bool read(std::string& piece) override;

 private:
  MarkerReplacer replacer_;
  bool finished_ = false;
};

}  // namespace varnok
