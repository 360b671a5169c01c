#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace varnok {

// Bytes that have come over a connection and were not used yet.
class HTTPInput {
 public:
  std::string_view bytes() const { return {storage_.get() + begin_, end_ - begin_}; }
  bool empty() const { return begin_ == end_; }

  void consume(std::size_t size) {
    begin_ += size;
    if (begin_ == end_) begin_ = end_ = 0;
  }

  // Where the next bytes go, spaceSize() of them; the bytes may grow to
  // `capacity` at least. What bytes() gave before is no longer valid.
  char* space(std::size_t capacity) {
    if (capacity > capacity_ || begin_ > 0) move(capacity > capacity_ ? capacity : capacity_);
    return storage_.get() + end_;
  }
  std::size_t spaceSize() const { return capacity_ - end_; }
  void commit(std::size_t size) { end_ += size; }

  // Gives memory back when there are no bytes and more than `capacity` is held.
  void shrink(std::size_t capacity) {
    if (!empty() || capacity_ <= capacity) return;
    storage_.reset();
    capacity_ = 0;
  }

 private:
  void move(std::size_t capacity) {
    const std::string_view kept = bytes();
    const std::size_t size = kept.size();
    if (capacity == capacity_) {
      std::memmove(storage_.get(), kept.data(), size);
    } else {
      std::unique_ptr<char[]> larger(new char[capacity]);
      if (size > 0) std::memcpy(larger.get(), kept.data(), size);
      storage_ = std::move(larger);
      capacity_ = capacity;
    }
    begin_ = 0;
    end_ = size;
  }

  std::unique_ptr<char[]> storage_;
  std::size_t capacity_ = 0;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace varnok
