// XdgDocumentHandOver: gives a file to the application that the desktop opens
// such files with (`xdg-open`).

#pragma once

#include <string>

#include "platform/developer_log.h"
#include "platform/document_hand_over.h"
#include "platform/screen_presenter.h"
#include "platform/status.h"
#include "platform/task_runner.h"
#include "platform/text_catalog.h"

namespace varnok {

class XdgDocumentHandOver : public DocumentHandOver {
 public:
  // `program` is a path or, without "/", a name in PATH. The references outlive
  // every hand-over under way.
  XdgDocumentHandOver(std::string program, TaskRunner& tasks, ScreenPresenter& presenter, const TextCatalog& texts,
                      DeveloperLog& log)
      : program_(std::move(program)), tasks_(tasks), presenter_(presenter), texts_(texts), log_(log) {}

  // Does not wait. When nothing takes the file an alert says so.
  void presentOptionsMenu(const std::string& path) override;

  // Waits until an application has taken the file. Any thread.
  Status handOver(const std::string& path) const;

 private:
  const std::string program_;
  TaskRunner& tasks_;
  ScreenPresenter& presenter_;
  const TextCatalog& texts_;
  DeveloperLog& log_;
};

}  // namespace varnok
