// The least that could be done for a backup, at the level of C: the rows stepped
// in order, every column read as text, the same bytes written.

#pragma once

#include <string>

namespace varnok {

enum class BarePictures { left, inBase64 };

// Steps two ordered cursors over the book of `home` and writes a copy of the file
// `result` beside it, as a backup is: temporary name, flush, rename. With
// `inBase64` every picture is read and turned into base64 too. 0 when done.
int bareBackup(const std::string& home, const std::string& result, BarePictures pictures = BarePictures::left);

}  // namespace varnok
