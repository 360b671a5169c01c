// IcuTextCollation: TextCollation over ICU.

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/text_collation.h"

namespace varnok {

class IcuTextCollation final : public TextCollation {
 public:
  // `locale` is the user's, such as "de_DE". The common order of all languages
  // for one that ICU does not know.
  explicit IcuTextCollation(const std::string& locale);
  IcuTextCollation(const IcuTextCollation&) = delete;
  IcuTextCollation& operator=(const IcuTextCollation&) = delete;
  ~IcuTextCollation() override;

  std::string sortKey(std::string_view text) const override;
  std::string upperCase(std::string_view text) const override;

 private:
  class Rules;
  std::unique_ptr<const Rules> rules_;
};

}  // namespace varnok
