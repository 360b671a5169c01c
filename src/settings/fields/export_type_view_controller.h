// ExportTypeViewController: the choice of the backup format.
//
// Lifetime. Made for one showing; the delegate closes it and outlives it.
// Threads. Main thread.

#pragma once

#include <string_view>

#include "app/preferences/choice_screen.h"
#include "app/preferences/preference_keys.h"
#include "platform/text_key.h"

namespace varnok {

class ExportTypeViewController : public ChoiceScreen {
 public:
  class Delegate {
   public:
    virtual ~Delegate() = default;
    // The choice has been stored.
    virtual void exportTypeDidFinish() = 0;
  };

  ExportTypeViewController(PreferenceStore& preferences, const TextCatalog& texts, ScreenPresenter& presenter,
                           Delegate& delegate)
      : ChoiceScreen({key::EXPORT_TYPE, text_key::TYPE, {"vcf", "csv"}}, preferences, texts, presenter),
        delegate_(delegate) {}

  std::string_view screenName() const override { return "ExportTypeViewController"; }

 private:
  void didFinish() override { delegate_.exportTypeDidFinish(); }

  Delegate& delegate_;
};

}  // namespace varnok
