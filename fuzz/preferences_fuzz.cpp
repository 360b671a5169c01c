// Any bytes as a preference file: parsing never fails badly, a part of the file
// gives the beginning of the changes, and what was parsed can be written again.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/linux/posix/preference_file_format.h"

namespace {

using varnok::PreferenceRecord;

std::vector<PreferenceRecord> recordsOf(std::string_view image) {
  std::vector<PreferenceRecord> records;
  if (image.size() <= varnok::kPreferenceHeaderSize) return records;
  const auto rest = image.substr(varnok::kPreferenceHeaderSize);
  if (varnok::parsePreferenceRecords(rest, varnok::kPreferenceHeaderSize, records) > rest.size()) std::abort();
  return records;
}

// As bytes, since a value that is not a number does not equal itself.
std::string written(const PreferenceRecord& record) {
  std::string bytes;
  if (!varnok::appendPreferenceRecord(bytes, record.key, record.value ? &*record.value : nullptr)) std::abort();
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view image(reinterpret_cast<const char*>(data), size);
  varnok::readPreferenceHeader(image);
  const auto all = recordsOf(image);
  const std::size_t cut = size == 0 ? 0 : data[size - 1] * size / 256;
  const auto some = recordsOf(image.substr(0, cut));
  if (some.size() > all.size()) std::abort();
  for (std::size_t i = 0; i < some.size(); ++i) {
    if (written(some[i]) != written(all[i])) std::abort();
  }
  for (const PreferenceRecord& record : all) {
    const std::string bytes = written(record);
    std::vector<PreferenceRecord> again;
    if (varnok::parsePreferenceRecords(bytes, 0, again) != bytes.size()) std::abort();
    if (again.size() != 1 || written(again.front()) != bytes) std::abort();
  }
  return 0;
}
