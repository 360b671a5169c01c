// Golden files: exact bytes under tests/golden/.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace varnok {

// Whether `actual` equals the golden file. A mismatch names the first line that
// differs, with control characters written out, and leaves NAME.actual beside
// the test program; UPDATE_GOLDEN=1 rewrites the golden file instead.
testing::AssertionResult matchesGolden(const std::string& name, std::string_view actual);

// Control characters and bytes outside ASCII written out, for messages.
std::string printable(std::string_view bytes);

std::string readWholeFile(const std::string& path);

}  // namespace varnok
