// What the module varnok-keyring exports: the Secret Service's libraries come
// with it, and only when a token is first asked for.

#pragma once

#include "platform/linux/tokens/keyring.h"

extern "C" {
// A new keyring entry called `name`, which the caller owns.
varnok::Keyring* varnokMakeKeyring(const char* name);
}
