#include <boost/json.hpp>

#include <fmt/format.h>

#include "app/preferences/preference_keys.h"
#include "cli/commands.h"
#include "platform/linux/eds/eds_contact_store.h"

namespace varnok {

// The embedded book is always there; that the desktop's cannot be listed is no
// failure of a list of what there is.
int storesCommand(CommandContext& context) {
  Status status;
  const std::vector<EdsSource> sources = edsSources(status);
  if (!status.ok()) context.report.notice(status.message());
  boost::json::array stores{{{"store", "sqlite"}, {"name", "Varnok"}, {"default", true}, {"writable", true}}};
  std::string text = "sqlite\tVarnok\n";
  for (const EdsSource& source : sources) {
    const std::string store = "eds:" + source.uid;
    stores.push_back({{"store", jsonText(store)},
                      {"name", jsonText(source.name)},
                      {"default", source.isSystem},
                      {"writable", source.isWritable}});
    text += fmt::format("{}\t{}{}{}\n", shown(store), shown(source.name), source.isSystem ? "\teds" : "",
                        source.isWritable ? "" : "\tread-only");
  }
  context.report.result({{"stores", stores}}, text);
  return kDone;
}

}  // namespace varnok
