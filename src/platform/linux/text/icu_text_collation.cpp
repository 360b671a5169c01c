#include "platform/linux/text/icu_text_collation.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace varnok {
namespace {

icu::UnicodeString unicode(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

}  // namespace

// ICU's collators may be used by several threads as long as nobody changes them.
class IcuTextCollation::Rules {
 public:
  explicit Rules(const std::string& name) : locale(icu::Locale::createFromName(name.c_str())) {
    UErrorCode error = U_ZERO_ERROR;
    collator.reset(icu::Collator::createInstance(locale, error));
    if (U_FAILURE(error)) collator.reset();
    if (collator != nullptr) collator->setStrength(icu::Collator::SECONDARY);
  }

  icu::Locale locale;
  std::unique_ptr<icu::Collator> collator;  // Null without ICU's data.
};

IcuTextCollation::IcuTextCollation(const std::string& locale) : rules_(std::make_unique<Rules>(locale)) {}

IcuTextCollation::~IcuTextCollation() = default;

// ICU ends a key with a zero byte and has none before it.
std::string IcuTextCollation::sortKey(std::string_view text) const {
  const icu::UnicodeString wide = unicode(text);
  if (rules_->collator == nullptr) return std::string(text) + '\0';
  std::string key(text.size() * 3 + 16, '\0');
  const auto fill = [&] {
    return rules_->collator->getSortKey(wide, reinterpret_cast<std::uint8_t*>(key.data()),
                                        static_cast<int32_t>(key.size()));
  };
  int32_t length = fill();
  if (static_cast<std::size_t>(length) > key.size()) {
    key.resize(static_cast<std::size_t>(length));
    length = fill();
  }
  key.resize(static_cast<std::size_t>(length));
  return key;
}

std::string IcuTextCollation::upperCase(std::string_view text) const {
  std::string upper;
  return unicode(text).toUpper(rules_->locale).toUTF8String(upper);
}

}  // namespace varnok
