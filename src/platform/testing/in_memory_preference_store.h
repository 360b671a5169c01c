// A PreferenceStore in memory. Counts its flushes; can be told to fail them.

#pragma once

#include "platform/preference_store.h"

namespace varnok {

class InMemoryPreferenceStore : public PreferenceStore {
 public:
  int flushes = 0;
  Status flushStatus;

 private:
  const Value* storedValue(std::string_view key) const override {
    const auto found = stored_.find(key);
    return found == stored_.end() ? nullptr : &found->second;
  }
  std::uint64_t storedGeneration() const override { return generation_; }
  void store(std::string_view key, const Value& value) override {
    stored_.insert_or_assign(std::string(key), value);
    ++generation_;
  }
  void erase(std::string_view key) override {
    if (const auto found = stored_.find(key); found != stored_.end()) stored_.erase(found);
    ++generation_;
  }
  Status flush() override {
    ++flushes;
    return flushStatus;
  }

  ValueDictionary stored_;
  std::uint64_t generation_ = 0;
};

}  // namespace varnok
