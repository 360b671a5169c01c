// ReminderViewController: the choice of the reminder's period.
//
// Lifetime. Made for one showing; the delegate closes it and outlives it.
// Threads. Main thread.

#pragma once

#include <string_view>

#include "app/preferences/choice_screen.h"
#include "app/preferences/preference_keys.h"
#include "platform/text_key.h"

namespace varnok {

class ReminderViewController : public ChoiceScreen {
 public:
  class Delegate {
   public:
    virtual ~Delegate() = default;
    // The period has been stored.
    virtual void reminderDidFinish() = 0;
  };

  ReminderViewController(PreferenceStore& preferences, const TextCatalog& texts, ScreenPresenter& presenter,
                         Delegate& delegate)
      : ChoiceScreen({key::EVERY, text_key::EVERY, {"WEEK", "MONTH"}}, preferences, texts, presenter),
        delegate_(delegate) {}

  std::string_view screenName() const override { return "ReminderViewController"; }

 private:
  void didFinish() override { delegate_.reminderDidFinish(); }

  Delegate& delegate_;
};

}  // namespace varnok
