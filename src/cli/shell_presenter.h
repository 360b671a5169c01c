// ShellPresenter: the screens of `varnokctl shell`. Main thread.

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/presentation_stack.h"

namespace varnok {

class ShellPresenter : public PresentationStack {
 public:
  // Whether anything to be seen has changed since this was asked last.
  bool takeChanged() { return std::exchange(changed_, false); }

  // The addresses that were to be opened in a browser; forgotten by this call.
  std::vector<std::string> takeURLs() { return std::exchange(urls_, {}); }

  void openURL(const std::string& url) override {
    urls_.push_back(url);
    changed_ = true;
  }

 private:
  void presentationDidChange() override { changed_ = true; }

  bool changed_ = true;
  std::vector<std::string> urls_;
};

}  // namespace varnok
