// SharedWords: eight-byte words of a file that several processes read and write
// at once. A word is never seen half written, and a word written is in the
// operating system's hands when the call returns.
//
// Words are stored through a shared mapping where that cannot fail. On a file
// system that may need space to change a block in place, a full disk would make
// such a store end the process; there they are written by a call instead.

#pragma once

#include <cstdint>

namespace varnok {

class SharedWords {
 public:
  SharedWords() = default;
  SharedWords(const SharedWords&) = delete;
  SharedWords& operator=(const SharedWords&) = delete;
  ~SharedWords();

  // Turns to the file `fd`, which must stay open; words of the old one are left.
  void attach(int fd);

  // Lets words below `end` be used. The caller promises that the file reaches
  // to `end` and is never cut below it.
  void reach(std::uint64_t end);

  // True when reading costs no call.
  bool mapped() const { return map_ != nullptr; }

  // The word as it stands in the file. `offset` is a multiple of eight. After a
  // write, a read is not done before the write is seen by all.
  std::uint64_t read(std::uint64_t offset) const;

  // False when the file took no change.
  bool write(std::uint64_t offset, std::uint64_t word);

 private:
  std::uint64_t* wordAt(std::uint64_t offset) const;
  void unmap();

  int fd_ = -1;
  bool storable_ = false;
  unsigned char* map_ = nullptr;
  std::uint64_t size_ = 0;  // Mapped bytes; may lie beyond the file's end.
};

}  // namespace varnok
