#pragma once

#include <string>

#include "cli/shell_driver.h"

namespace varnok {

// Carries out one request of a program, a line of JSON, and answers with one:
// {"ok":true, ...the screen...} or {"ok":false,"error":TEXT}. `quit` becomes
// true at the request to end.
std::string answerRequest(const std::string& line, ShellDriver& driver, const PresentationStack& stack,
                          const ShellMailComposer& mail, bool& quit);

}  // namespace varnok
