#include "cli/progress_bar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "cli/report.h"

namespace varnok {
namespace {

constexpr int kBarColumns = 20;

int terminalColumns() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

// At most `count` characters. Wide ones may make the line longer than counted;
// half of the room is left for them.
std::string firstCharacters(const std::string& text, int count) {
  std::size_t end = 0;
  while (end < text.size() && count > 0) {
    ++end;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80)
      ++end;
    --count;
  }
  return text.substr(0, end);
}

}  // namespace

ProgressBar::ProgressBar(bool quiet) : visible_(!quiet && isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar() {
  if (drawn_) std::fputs("\r\033[K", stderr);
}

void ProgressBar::show(double fraction, const std::string& label) {
  const auto now = std::chrono::steady_clock::now();
  if (!visible_ || now < next_) return;
  next_ = now + std::chrono::milliseconds(50);
  drawn_ = true;
  const int full = static_cast<int>(std::lround(std::clamp(fraction, 0.0, 1.0) * kBarColumns));
  const std::string bar =
      std::string(static_cast<std::size_t>(full), '#') + std::string(static_cast<std::size_t>(kBarColumns - full), '.');
  const int room = std::max(0, (terminalColumns() - kBarColumns - 10) / 2);
  std::fprintf(stderr, "\r\033[K[%s] %3.0f %% %s", bar.c_str(), fraction * 100,
               firstCharacters(shown(label), room).c_str());
  std::fflush(stderr);
}

}  // namespace varnok
