#pragma once

#include <string>

#include "platform/status.h"
#include "platform/text_catalog.h"

namespace varnok {

// Why something failed, in the user's language: a sentence without its full
// stop, for the placeholder of a text such as BACKUP_FAILED.
std::string causeText(const Status& status, const TextCatalog& texts);

}  // namespace varnok
