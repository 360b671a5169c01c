// DesktopStoreReview: the application's page in the desktop's software centre,
// which is found by the AppStream identifier of the application.

#pragma once

#include <string>

#include "platform/developer_log.h"
#include "platform/linux/dbus/lazy_service.h"
#include "platform/linux/dbus/open_questions.h"
#include "platform/store_review.h"
#include "platform/task_runner.h"

namespace varnok {

class DesktopStoreReview : public StoreReview {
 public:
  struct Settings {
    bool desktop = false;  // Somebody sits at one; without it nothing is opened.
    std::string component = "io.varnok.Varnok";
    BusSettings bus{};
  };

  // The references, and this, outlive what is being opened.
  DesktopStoreReview(Settings settings, TaskRunner& tasks, DeveloperLog& log);

  // The page is where the desktop lets a user rate.
  void requestReview() override;

  // What is an AppStream address is this application's, however it is named there.
  void openURL(const std::string& url) override;

  // As for DesktopMailComposer.
  void stop();

 private:
  void open(const std::string& url);
  void openWithProgram(const std::string& url, const std::string& why);

  const Settings settings_;
  TaskRunner& tasks_;
  DeveloperLog& log_;
  OpenQuestions questions_;
  LazyService<DesktopPortal> portal_;
};

}  // namespace varnok
