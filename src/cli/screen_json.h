#pragma once

#include <boost/json/object.hpp>

#include "cli/shell_mail_composer.h"
#include "platform/presentation_stack.h"

namespace varnok {

// What is in front of the user: the screen with its controls and its table, the
// alert or sheet, the overlay, the mail composer.
boost::json::object screenDocument(const PresentationStack& stack, const ShellMailComposer& mail);

}  // namespace varnok
