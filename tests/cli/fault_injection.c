/* Preloaded into a program: makes one of its changes to a folder's files fail.
 *
 * Counts the calls that write, flush, resize or rename regular files below
 * VARNOK_FAULT_FOLDER, and flushes of it and of the folders there. The call with
 * the number VARNOK_FAULT_NUMBER (from 1; 0 or unset: none) meets
 * VARNOK_FAULT_KIND:
 *
 *   EIO     it fails, once
 *   ENOSPC  it fails, and so does whatever needs space afterwards: a full disk
 *   SHORT   a write takes half of the bytes and is no failure; other calls work
 *
 * VARNOK_FAULT_REPORT names a file outside the folder that gets the name and
 * the file of the call that was met, and at the end the number of calls.
 *
 * What is written through a mapping of a file cannot be seen here.
 */

#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdatomic.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#define EXPORTED __attribute__((visibility("default")))

/* The next library's function of this name, of the type of the one being defined. */
#define REAL(name) ((__typeof__(&name))next(#name))

enum fate { GO_AHEAD, FAIL, HALF };

static atomic_int calls;
static atomic_bool disk_is_full;

static void* next(const char* name) {
  void* function = dlsym(RTLD_NEXT, name);
  if (function == NULL) abort();
  return function;
}

static const char* setting(const char* name) {
  const char* value = getenv(name);
  return value == NULL ? "" : value;
}

static void report(const char* text, const char* path, int number) {
  char line[PATH_MAX + 100];
  const int length = snprintf(line, sizeof line, "%s %s %d\n", text, path, number);
  const int fd = open(setting("VARNOK_FAULT_REPORT"), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (fd < 0) return;
  if (length > 0) syscall(SYS_write, fd, line, (size_t)length);
  close(fd);
}

__attribute__((destructor)) static void report_calls(void) {
  report("calls", "-", atomic_load(&calls));
}

static bool is_folder_or_below(const char* path) {
  const char* folder = setting("VARNOK_FAULT_FOLDER");
  const size_t length = strlen(folder);
  return length > 0 && strncmp(path, folder, length) == 0 && (path[length] == '/' || path[length] == '\0');
}

static enum fate fate_of(const char* call, const char* path, bool writes) {
  if (!is_folder_or_below(path)) return GO_AHEAD;
  const int number = atomic_fetch_add(&calls, 1) + 1;
  if (writes && atomic_load(&disk_is_full)) {
    errno = ENOSPC;
    return FAIL;
  }
  if (number != atoi(setting("VARNOK_FAULT_NUMBER"))) return GO_AHEAD;
  report(call, path, number);
  const char* kind = setting("VARNOK_FAULT_KIND");
  if (strcmp(kind, "SHORT") == 0) return writes ? HALF : GO_AHEAD;
  const bool full = strcmp(kind, "ENOSPC") == 0;
  atomic_store(&disk_is_full, full);
  errno = full ? ENOSPC : EIO;
  return FAIL;
}

static enum fate fate_of_fd(const char* call, int fd, bool writes) {
  char link[64];
  char path[PATH_MAX];
  struct stat information;
  const int error = errno;
  if (fstat(fd, &information) != 0 || !(S_ISREG(information.st_mode) || S_ISDIR(information.st_mode))) {
    errno = error;
    return GO_AHEAD;
  }
  snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  const ssize_t length = readlink(link, path, sizeof path - 1);
  errno = error;
  if (length < 0) return GO_AHEAD;
  path[length] = '\0';
  return fate_of(call, path, writes);
}

static size_t taken(enum fate fate, size_t count) {
  return fate == HALF && count > 1 ? count / 2 : count;
}

EXPORTED ssize_t write(int fd, const void* bytes, size_t count) {
  const enum fate fate = fate_of_fd("write", fd, true);
  return fate == FAIL ? -1 : REAL(write)(fd, bytes, taken(fate, count));
}

EXPORTED ssize_t pwrite(int fd, const void* bytes, size_t count, off_t offset) {
  const enum fate fate = fate_of_fd("pwrite", fd, true);
  return fate == FAIL ? -1 : REAL(pwrite)(fd, bytes, taken(fate, count), offset);
}

EXPORTED ssize_t pwrite64(int fd, const void* bytes, size_t count, off64_t offset) {
  const enum fate fate = fate_of_fd("pwrite64", fd, true);
  return fate == FAIL ? -1 : REAL(pwrite64)(fd, bytes, taken(fate, count), offset);
}

EXPORTED ssize_t writev(int fd, const struct iovec* pieces, int count) {
  const enum fate fate = fate_of_fd("writev", fd, true);
  return fate == FAIL ? -1 : REAL(writev)(fd, pieces, fate == HALF && count > 1 ? count / 2 : count);
}

EXPORTED int fsync(int fd) {
  return fate_of_fd("fsync", fd, false) == FAIL ? -1 : REAL(fsync)(fd);
}

EXPORTED int fdatasync(int fd) {
  return fate_of_fd("fdatasync", fd, false) == FAIL ? -1 : REAL(fdatasync)(fd);
}

EXPORTED int ftruncate(int fd, off_t size) {
  return fate_of_fd("ftruncate", fd, true) == FAIL ? -1 : REAL(ftruncate)(fd, size);
}

EXPORTED int ftruncate64(int fd, off64_t size) {
  return fate_of_fd("ftruncate64", fd, true) == FAIL ? -1 : REAL(ftruncate64)(fd, size);
}

EXPORTED int fallocate(int fd, int mode, off_t offset, off_t size) {
  return fate_of_fd("fallocate", fd, true) == FAIL ? -1 : REAL(fallocate)(fd, mode, offset, size);
}

EXPORTED int fallocate64(int fd, int mode, off64_t offset, off64_t size) {
  return fate_of_fd("fallocate64", fd, true) == FAIL ? -1 : REAL(fallocate64)(fd, mode, offset, size);
}

EXPORTED int posix_fallocate(int fd, off_t offset, off_t size) {
  return fate_of_fd("posix_fallocate", fd, true) == FAIL ? errno : REAL(posix_fallocate)(fd, offset, size);
}

EXPORTED int posix_fallocate64(int fd, off64_t offset, off64_t size) {
  return fate_of_fd("posix_fallocate64", fd, true) == FAIL ? errno : REAL(posix_fallocate64)(fd, offset, size);
}

EXPORTED int rename(const char* from, const char* to) {
  return fate_of("rename", to, false) == FAIL ? -1 : REAL(rename)(from, to);
}

EXPORTED int renameat(int from_folder, const char* from, int to_folder, const char* to) {
  return fate_of("renameat", to, false) == FAIL ? -1 : REAL(renameat)(from_folder, from, to_folder, to);
}
