#include "cli/question.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iostream>
#include <string>

namespace varnok {

bool confirmed(std::string_view question) {
  std::fprintf(stderr, "%.*s [y/N] ", static_cast<int>(question.size()), question.data());
  std::string answer;
  std::getline(std::cin, answer);
  if (isatty(STDIN_FILENO) == 0) std::fputc('\n', stderr);  // Nobody has pressed the return key.
  std::erase_if(answer, [](unsigned char c) { return std::isspace(c) != 0; });
  std::ranges::transform(answer, answer.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return answer == "y" || answer == "yes";
}

}  // namespace varnok
