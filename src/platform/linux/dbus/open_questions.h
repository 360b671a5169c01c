#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/linux/dbus/desktop_portal.h"

namespace varnok {

// The portal's questions that the user has not answered. An answer may come
// before the question is kept. Any thread.
class OpenQuestions {
 public:
  using Number = unsigned;

  // Before the portal is asked. 0 when everything has ended for good.
  Number begin() {
    const std::lock_guard lock(mutex_);
    if (stopped_) return 0;
    questions_.emplace(++last_, nullptr);
    return last_;
  }

  // Drops the question when it has ended meanwhile.
  void keep(Number number, std::unique_ptr<PortalQuestion> question) {
    const std::lock_guard lock(mutex_);
    const auto found = questions_.find(number);
    if (found != questions_.end()) found->second.swap(question);
    // What is dropped takes no lock of ours: its answer is posted elsewhere.
  }

  bool isOpen(Number number) {
    const std::lock_guard lock(mutex_);
    return questions_.contains(number);
  }

  // Whether it was still open.
  bool end(Number number) {
    std::unique_ptr<PortalQuestion> question;
    const std::lock_guard lock(mutex_);
    const auto found = questions_.find(number);
    if (found == questions_.end()) return false;
    question = std::move(found->second);
    questions_.erase(found);
    return true;
  }

  // Takes every question away.
  void endAll() {
    std::map<Number, std::unique_ptr<PortalQuestion>> ended;
    const std::lock_guard lock(mutex_);
    ended.swap(questions_);
  }

  // The same, and there will be none.
  void stop() {
    {
      const std::lock_guard lock(mutex_);
      stopped_ = true;
    }
    endAll();
  }

 private:
  std::mutex mutex_;
  Number last_ = 0;
  bool stopped_ = false;
  std::map<Number, std::unique_ptr<PortalQuestion>> questions_;
};

}  // namespace varnok
