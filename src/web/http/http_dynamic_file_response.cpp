#include "web/http/http_dynamic_file_response.h"

#include <algorithm>

namespace varnok {

MarkerReplacer::MarkerReplacer(std::string separator, Replacements replacements)
    : separator_(std::move(separator)), replacements_(std::move(replacements)) {
  for (const auto& [key, value] : replacements_)
    longestKey_ = std::max(longestKey_, key.size());
}

void MarkerReplacer::replace(std::string_view piece, std::string& output) {
  if (separator_.empty()) {
    output += piece;
    return;
  }
  held_ += piece;
  std::size_t used = 0;
  while (step(used, output)) {
  }
  held_.erase(0, used);
}

// Handles what lies before the next separator, and the separator. False when the
// next separator has not come.
bool MarkerReplacer::step(std::size_t& used, std::string& output) {
  const std::string_view rest = std::string_view(held_).substr(used);
  const std::size_t end = rest.find(separator_);
  if (end == std::string_view::npos) {
    used += passOn(rest, output);
    return false;
  }
  const std::string_view before = rest.substr(0, end);
  used += end + separator_.size();
  switch (place_) {
    case Place::text:
      output += before;
      place_ = Place::key;
      break;
    case Place::key:
      if (const auto found = replacements_.find(before); found != replacements_.end()) {
        output += found->second;
      } else {
        output.append(separator_).append(before).append(separator_);
      }
      place_ = Place::text;
      break;
    case Place::unknownKey:
      output.append(before).append(separator_);
      place_ = Place::text;
      break;
  }
  return true;
}

// `rest` holds no separator, but may end with the beginning of one. Answers how
// much of it needs to be looked at no more.
std::size_t MarkerReplacer::passOn(std::string_view rest, std::string& output) {
  const std::size_t tail = std::min(rest.size(), separator_.size() - 1);
  const std::size_t certain = rest.size() - tail;
  if (place_ == Place::key) {
    if (certain <= longestKey_) return 0;
    output += separator_;
    place_ = Place::unknownKey;
  }
  output += rest.substr(0, certain);
  return certain;
}

void MarkerReplacer::finish(std::string& output) {
  if (place_ == Place::key) output += separator_;
  output += held_;
  held_.clear();
  place_ = Place::text;
}

bool HTTPDynamicFileResponse::read(std::string& piece) {
  // A block may hold nothing that can be sent yet.
  const std::size_t before = piece.size();
  while (piece.size() == before && !finished_) {
    std::string block;
    if (!HTTPAsyncFileResponse::read(block)) return false;
    finished_ = block.empty();
    if (finished_) {
      replacer_.finish(piece);
    } else {
      replacer_.replace(block, piece);
    }
  }
  return true;
}

}  // namespace varnok
