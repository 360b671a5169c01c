#include "platform/linux/tokens/keyring.h"

namespace varnok {

std::unique_ptr<Keyring> openKeyring(const std::string& /*name*/) {
  return nullptr;
}

}  // namespace varnok
