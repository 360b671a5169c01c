// LineReader: the lines of standard input, read while the main thread works on.

#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace varnok {

class LineReader {
 public:
  // `arrived` is called on the reader's thread after each line and at the end.
  explicit LineReader(std::function<void()> arrived);
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  ~LineReader();

  // The oldest line that has not been taken, without its end. Any thread.
  std::optional<std::string> take();

  // Whether a line waits, or none will come any more.
  bool ready() const;

 private:
  void read();
  void cutLines(std::string& bytes);

  std::function<void()> arrived_;
  mutable std::mutex mutex_;
  std::deque<std::string> lines_;
  bool ended_ = false;
  int stop_ = -1;  // An eventfd that ends the reading.
  std::thread thread_;
};

}  // namespace varnok
