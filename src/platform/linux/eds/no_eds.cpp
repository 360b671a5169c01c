#include "platform/linux/eds/eds_contact_store.h"

namespace varnok {
namespace {

Status missing() {
  return {Status::Code::unavailable,
          "this program was built without the desktop's address book (Evolution Data Server)"};
}

}  // namespace

std::unique_ptr<EdsBook> openEdsBook(const std::string& /*uid*/, Status& status) {
  status = missing();
  return nullptr;
}

std::vector<EdsSource> edsSources(Status& status) {
  status = missing();
  return {};
}

}  // namespace varnok
