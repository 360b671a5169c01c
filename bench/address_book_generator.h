// A deterministic address book for benchmarks: the same people for the same
// number, on every machine.
//
// Names in many scripts, a label of the user's own on every third entry, notes,
// addresses; 15 of a hundred people repeat an earlier one.

#pragma once

#include <cstdint>

#include "contacts/contact_record.h"

namespace varnok {

class AddressBookGenerator {
 public:
  // Person `index`, counting from 0.
  PersonRef person(std::uint32_t index);

 private:
  std::uint32_t entries_ = 0;
};

}  // namespace varnok
