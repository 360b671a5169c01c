#include "platform/device.h"

#include "platform/check.h"

namespace varnok {

std::string languageCode(const Device& device) {
  VARNOK_CHECK(!device.appleLanguages.empty());
  std::string code = device.appleLanguages.front().substr(0, 2);
  for (char& letter : code) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return code;
}

}  // namespace varnok
