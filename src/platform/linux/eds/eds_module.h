// What the module varnok-eds exports: libebook and the libraries behind it come
// with it, and only when an address book of the desktop is first asked for.

#pragma once

#include "platform/linux/eds/eds_book.h"

extern "C" {
// The address book `uid`, the system's where that is empty, connected. The
// caller owns it. Null with a Status when it cannot be had.
varnok::EdsBook* varnokOpenEdsBook(const char* uid, varnok::Status* status);

// Every address book that is switched on, the system's first.
void varnokListEdsBooks(std::vector<varnok::EdsSource>* sources, varnok::Status* status);
}
