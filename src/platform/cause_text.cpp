#include "platform/cause_text.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/text_key.h"

namespace varnok {
namespace {

struct Cause {
  Status::Code code;
  std::string_view text;
};
constexpr std::array kCauses{
    Cause{Status::Code::noSpace, text_key::CAUSE_NO_SPACE},
    Cause{Status::Code::accessDenied, text_key::CAUSE_ACCESS_DENIED},
    Cause{Status::Code::notFound, text_key::CAUSE_NOT_FOUND},
    Cause{Status::Code::inputOutput, text_key::CAUSE_INPUT_OUTPUT},
    Cause{Status::Code::corrupt, text_key::CAUSE_CORRUPT},
    Cause{Status::Code::newerVersion, text_key::CAUSE_NEWER_VERSION},
    Cause{Status::Code::busy, text_key::CAUSE_BUSY},
};

}  // namespace

std::string causeText(const Status& status, const TextCatalog& texts) {
  const auto* found = std::ranges::find(kCauses, status.code(), &Cause::code);
  return texts.text(found == kCauses.end() ? text_key::CAUSE_OTHER : found->text);
}

}  // namespace varnok
