#pragma once

#include <string>

#include "cli/shell_driver.h"
#include "cli/shell_presenter.h"

namespace varnok {

// Carries out one request of a program, a line of JSON, and answers with one:
// {"ok":true, ...the screen...} or {"ok":false,"error":TEXT}. "openURL" is the
// address that the request wanted opened in a browser, else null. `quit` becomes
// true at the request to end.
std::string answerRequest(const std::string& line, ShellDriver& driver, ShellPresenter& presenter,
                          const ShellMailComposer& mail, bool& quit);

}  // namespace varnok
