// PreferenceStore: string-keyed preferences in three layers. A read looks in
// the volatile layer (this run only), then the stored one, then the registered
// defaults.
//
// Threads. Every operation may be called from any thread and is atomic; there
// is no transaction over several keys.
//
// Failure. A value that cannot be written to disk still counts for this run;
// synchronize() says that the disk has not got it.

#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/status.h"
#include "platform/value.h"

namespace varnok {

class PreferenceStore {
 public:
  enum class Origin { absent, registered, stored, run };

  PreferenceStore() = default;
  PreferenceStore(const PreferenceStore&) = delete;
  PreferenceStore& operator=(const PreferenceStore&) = delete;
  virtual ~PreferenceStore() = default;

  // Replaces the layer of registered defaults. Never written to disk.
  void registerDefaults(ValueDictionary defaults);

  // Puts `value` above the stored layer for the life of this object. A later
  // set of the same key changes this layer too, so that what a run reads is
  // what it last wrote.
  void setVolatileValue(Value value, std::string_view key);

  std::optional<Value> objectForKey(std::string_view key) const;

  // The text, or a number's decimal text; nothing for other kinds.
  std::optional<std::string> stringForKey(std::string_view key) const;

  // True for a number that is not zero, and for text that begins, after blanks
  // and an optional sign and zeros, with "Y", "y", "T", "t" or a digit 1 to 9.
  bool boolForKey(std::string_view key) const;

  // boolForKey() of several keys at one moment: bit i for keys[i]; at most 32.
  // Asked again for the same keys, it looks whether anything has changed.
  std::uint32_t boolsForKeys(std::span<const std::string_view> keys) const;

  // The number truncated, or the leading decimal integer of a text; else 0.
  std::int64_t integerForKey(std::string_view key) const;

  // The number, or the leading decimal number of a text; else 0.0.
  double doubleForKey(std::string_view key) const;

  void setValue(Value value, std::string_view key);

  // integerForKey(), then the next number stored and synchronize(), in one step.
  // Answers the number before; `status` says how synchronize() went.
  std::int64_t takeNumberForKey(std::string_view key, Status& status);

  void setObject(Value value, std::string_view key) { setValue(std::move(value), key); }
  void setBool(bool value, std::string_view key) { setValue(value, key); }
  void setInteger(std::int64_t value, std::string_view key) { setValue(value, key); }
  void setDouble(double value, std::string_view key) { setValue(value, key); }

  // Forgets the stored and the volatile value; a registered default shows again.
  void removeObjectForKey(std::string_view key);

  // Everything set so far has reached the operating system when this returns
  // ok: a killed process loses none of it. Costs no more than a look when
  // nothing is pending.
  Status synchronize();

  // Where a read of `key` finds its value.
  Origin originOf(std::string_view key) const;

 private:
  // The value that a read of `key` finds, or null; valid while mutex_ is held.
  const Value* find(std::string_view key) const;

  // setValue(), while mutex_ is held.
  void put(Value value, std::string_view key);

  // The stored layer. Calls are serialised by this class.

  // Null when nothing is stored; valid until the next call.
  virtual const Value* storedValue(std::string_view key) const = 0;
  // Grows with every change of the stored layer, another process's included. One
  // change may go unseen: a value of eight bytes that replaces another in place.
  virtual std::uint64_t storedGeneration() const = 0;
  virtual void store(std::string_view key, const Value& value) = 0;
  virtual void erase(std::string_view key) = 0;
  virtual Status flush() = 0;

  // What boolsForKeys() found last, right until the generation grows.
  struct Bools {
    std::vector<std::string> keys;
    std::uint64_t generation = 0;
    std::uint32_t bits = 0;
  };

  mutable std::mutex mutex_;
  ValueDictionary registered_;
  ValueDictionary volatile_;
  std::uint64_t generation_ = 0;  // Of the two layers above.
  mutable Bools lastBools_;
};

}  // namespace varnok
