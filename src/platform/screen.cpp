#include "platform/screen.h"

namespace varnok {

bool hasRow(const Screen& screen, const IndexPath& indexPath) {
  return indexPath.section >= 0 && indexPath.section < screen.numberOfSections() && indexPath.row >= 0 &&
         indexPath.row < screen.numberOfRowsInSection(indexPath.section);
}

std::vector<TableSection> tableOf(const Screen& screen) {
  std::vector<TableSection> sections;
  for (int section = 0; section < screen.numberOfSections(); ++section) {
    TableHeading heading = screen.headingOfSection(section);
    TableSection& whole = sections.emplace_back();
    whole.title = std::move(heading.title);
    whole.footer = std::move(heading.footer);
    for (int row = 0; row < screen.numberOfRowsInSection(section); ++row)
      whole.rows.push_back(screen.cellForRowAtIndexPath({section, row}));
  }
  return sections;
}

}  // namespace varnok
