#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "platform/status.h"

namespace varnok {

// Runs a program, which gets `input` on its standard input, and waits for it.
// Ok when it ended with status 0. Otherwise the message holds how it ended and
// the beginning of what it wrote to standard error. Past `timeLimit` it is
// killed together with the processes that it started.
//
// `arguments` begins with the program's path. The program inherits the
// environment and no open file but the standard three. Any thread.
Status runProgram(const std::vector<std::string>& arguments, std::string_view input,
                  std::chrono::milliseconds timeLimit);

// Starts a program that may stay, such as a viewer, without input and output.
// `arguments` begins with its path or, without "/", its name in PATH. Ok when
// it has ended with status 0, or has not ended within `time`: then it is left
// to itself, also when this program ends.
Status launchProgram(const std::vector<std::string>& arguments, std::chrono::milliseconds time);

}  // namespace varnok
