// libcurl's functions as far as this folder calls them, each of which loads the
// library when it is first needed. Linked in the usual way it would bring the
// forty libraries behind it into every run of the program, and most runs call
// nobody.
//
// Where the library cannot be loaded, calls fail as libcurl's own do.

#include <curl/curl.h>
#include <dlfcn.h>

#include <cstdarg>

// The header checks the arguments of these with macros of the same names.
#undef curl_easy_getinfo
#undef curl_easy_setopt

namespace {

template <typename Function>
Function* find(const char* name) {
  static void* const library = dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL);
  return library == nullptr ? nullptr : reinterpret_cast<Function*>(dlsym(library, name));
}

// The function that a name of libcurl stands for, or null.
#define FOUND(name)                                            \
  ([] {                                                        \
    static auto* const function = find<decltype(name)>(#name); \
    return function;                                           \
  }())

}  // namespace

CURLcode curl_global_init(long flags) {
  return FOUND(curl_global_init) == nullptr ? CURLE_FAILED_INIT : FOUND(curl_global_init)(flags);
}

CURL* curl_easy_init() {
  return FOUND(curl_easy_init) == nullptr ? nullptr : FOUND(curl_easy_init)();
}

// From here on a handle is there, and so is the library.

void curl_easy_cleanup(CURL* curl) {
  if (curl != nullptr) FOUND(curl_easy_cleanup)(curl);
}

void curl_easy_reset(CURL* curl) {
  FOUND(curl_easy_reset)(curl);
}

CURLcode curl_easy_perform(CURL* curl) {
  return FOUND(curl_easy_perform)(curl);
}

const char* curl_easy_strerror(CURLcode code) {
  return FOUND(curl_easy_strerror)(code);
}

CURLcode curl_easy_setopt(CURL* curl, CURLoption option, ...) {
  va_list arguments;
  va_start(arguments, option);
  CURLcode code = CURLE_OK;
  if (option >= CURLOPTTYPE_OFF_T && option < CURLOPTTYPE_BLOB) {
    code = FOUND(curl_easy_setopt)(curl, option, va_arg(arguments, curl_off_t));
  } else if (option < CURLOPTTYPE_OBJECTPOINT) {
    code = FOUND(curl_easy_setopt)(curl, option, va_arg(arguments, long));
  } else {
    code = FOUND(curl_easy_setopt)(curl, option, va_arg(arguments, void*));
  }
  va_end(arguments);
  return code;
}

// What is asked for is written through a pointer, whatever its type.
CURLcode curl_easy_getinfo(CURL* curl, CURLINFO information, ...) {
  va_list arguments;
  va_start(arguments, information);
  const CURLcode code = FOUND(curl_easy_getinfo)(curl, information, va_arg(arguments, void*));
  va_end(arguments);
  return code;
}

curl_slist* curl_slist_append(curl_slist* list, const char* text) {
  return FOUND(curl_slist_append)(list, text);
}

void curl_slist_free_all(curl_slist* list) {
  if (list != nullptr) FOUND(curl_slist_free_all)(list);
}

void curl_free(void* memory) {
  if (memory != nullptr) FOUND(curl_free)(memory);
}

CURLU* curl_url() {
  return FOUND(curl_url) == nullptr ? nullptr : FOUND(curl_url)();
}

void curl_url_cleanup(CURLU* url) {
  if (url != nullptr) FOUND(curl_url_cleanup)(url);
}

CURLUcode curl_url_get(CURLU* url, CURLUPart what, char** part, unsigned flags) {
  return url == nullptr ? CURLUE_BAD_HANDLE : FOUND(curl_url_get)(url, what, part, flags);
}

CURLUcode curl_url_set(CURLU* url, CURLUPart part, const char* content, unsigned flags) {
  return url == nullptr ? CURLUE_BAD_HANDLE : FOUND(curl_url_set)(url, part, content, flags);
}
