// What every call of libebook needs here: references that go by themselves, and
// an end in time.

#pragma once

#include <libebook/libebook.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/status.h"

namespace varnok {

// A reference of our own to a GObject.
template <typename Object>
std::shared_ptr<Object> owned(Object* object) {
  return {object, [](Object* reference) {
            if (reference != nullptr) g_object_unref(reference);
          }};
}

inline constexpr std::chrono::seconds kSmallCall{3};

// Runs `call` on a thread of its own, cancels it when `limit` is over and gives
// it up when it does not end then either. What it touches must be its own or
// shared with it: a call that was given up may still be running. `error` is the
// call's to set.
Status callWithin(std::chrono::milliseconds limit, std::function<void(GCancellable*, GError**)> call);

}  // namespace varnok
