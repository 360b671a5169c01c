#include "platform/linux/curl/dropbox_metadata.h"

#include <algorithm>
#include <cstdio>

#include "platform/linux/curl/dropbox_json.h"

namespace varnok {

DropboxMetadata metadataOf(const boost::json::value& json) {
  DropboxMetadata metadata;
  metadata.name = textAt(json, "name");
  metadata.pathDisplay = textAt(json, "path_display");
  metadata.isFolder = textAt(json, ".tag") == "folder";
  metadata.size = static_cast<std::uint64_t>(std::max<std::int64_t>(0, numberAt(json, "size")));
  metadata.modified = serviceTime(textAt(json, "client_modified"));
  return metadata;
}

Instant serviceTime(std::string_view text) {
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  const std::string copy(text);
  const int read = std::sscanf(copy.c_str(), "%4d-%2u-%2uT%2d:%2d:%2dZ", &year, &month, &day, &hour, &minute, &second);
  const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
  if (read != 6 || !date.ok()) return {};
  return std::chrono::sys_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
         std::chrono::seconds(second);
}

}  // namespace varnok
