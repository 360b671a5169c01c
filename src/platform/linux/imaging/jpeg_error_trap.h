// JPEGErrorTrap: turns the JPEG library's fatal errors into an answer. The
// library leaves by longjmp, which runs no destructor: what is passed to
// guarded() may call the library and touch plain values, and must not make an
// object with a destructor.

#pragma once

#include <csetjmp>
#include <cstdio>  // jpeglib.h needs it.

#include <jpeglib.h>

namespace varnok {

class JPEGErrorTrap {
 public:
  // The manager to put into a jpeg_compress_struct or jpeg_decompress_struct.
  jpeg_error_mgr* manager() {
    jpeg_error_mgr* const errors = jpeg_std_error(&errors_.manager);
    errors->error_exit = [](j_common_ptr codec) { std::longjmp(reinterpret_cast<Errors*>(codec->err)->escape, 1); };
    errors->emit_message = [](j_common_ptr, int) {};  // Warnings and traces.
    return errors;
  }

  // Whether `body` ended without a fatal error.
  template <typename Body>
  bool guarded(const Body& body) {
    if (setjmp(errors_.escape) != 0) return false;
    body();
    return true;
  }

 private:
  struct Errors {
    jpeg_error_mgr manager;  // First, so that a pointer to it is one to Errors.
    std::jmp_buf escape;
  };
  Errors errors_{};
};

}  // namespace varnok
