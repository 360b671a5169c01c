// EdsBook: the contacts of one address book of Evolution Data Server, as vCards.
//
// Bulk calls only. Every call ends: three seconds where it is small, longer by
// the number of contacts where it is not. A call that ran into its limit may
// still be carried out by the service.
//
// Threads. Any one at a time for one object; many objects may share a book.
//
// Failure. unavailable when the service does not answer, accessDenied when it
// refuses, inputOutput when it reports another failure. Changes are never tried
// twice; reading starts a service that has gone once more.

#pragma once

#include <string>
#include <vector>

#include "platform/status.h"

namespace varnok {

struct EdsSource {
  std::string uid;
  std::string name;
  bool isSystem = false;  // The one that stands for no name.
  bool isWritable = false;
};

class EdsBook {
 public:
  virtual ~EdsBook() = default;

  virtual const EdsSource& source() const = 0;

  // Another text after every change of the book, a moment after it; asks nobody.
  // Empty where the service does not say. What is fetched later is as new, or newer.
  virtual std::string revision() = 0;

  virtual Status fetch(std::vector<std::string>& cards) = 0;
  // Of those that are there, in any order.
  virtual Status fetchSome(const std::vector<std::string>& uids, std::vector<std::string>& cards) = 0;

  // `uids` receives the names that the service has given them, in their order,
  // also of those added before a failure.
  virtual Status add(const std::vector<std::string>& cards, std::vector<std::string>& uids) = 0;
  virtual Status modify(const std::vector<std::string>& cards) = 0;
  virtual Status remove(const std::vector<std::string>& uids) = 0;
};

}  // namespace varnok
