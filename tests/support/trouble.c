/* Calls of the system that go wrong, for programs that load this first. TROUBLE says how:
 *   interrupt        every other read, write, fsync, rename and syncfs is broken off by a signal, and what moves
 *                    bytes moves only some of them
 *   fail:WORD:N      from the N-th read on of a file whose path has the word, reads fail
 *   die:WORD         the first read of such a file ends the process */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

static int Is(const char* mode) {
  const char* given = getenv("TROUBLE");
  return given != NULL && strncmp(given, mode, strlen(mode)) == 0;
}

static int Interrupts(void) {
  static __thread unsigned calls;
  if (!Is("interrupt") || ++calls % 2 == 0) return 0;
  errno = EINTR;
  return 1;
}

static size_t Some(size_t count) { return Is("interrupt") && count > 3 ? count / 2 : count; }

static int Names(int fd, const char* word, size_t length) {
  char link[64], path[4096];
  ssize_t count;
  snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  count = readlink(link, path, sizeof path - 1);
  if (count < 0) return 0;
  path[count] = 0;
  return memmem(path, (size_t)count, word, length) != NULL;
}

static int Fails(int fd) {
  static int reads;
  const char* given = getenv("TROUBLE");
  const char* word = given != NULL ? strchr(given, ':') : NULL;
  const char* number;
  size_t length;
  if (word++ == NULL) return 0;
  number = strchr(word, ':');
  length = number != NULL ? (size_t)(number - word) : strlen(word);
  if (!Names(fd, word, length)) return 0;
  if (Is("die:")) raise(SIGKILL);
  if (!Is("fail:") || number == NULL || ++reads < atoi(number + 1)) return 0;
  errno = EIO;
  return 1;
}

#define NEXT(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

ssize_t read(int fd, void* to, size_t count) {
  return Fails(fd) || Interrupts() ? -1 : NEXT(read)(fd, to, Some(count));
}
ssize_t pread(int fd, void* to, size_t count, off_t offset) {
  return Fails(fd) || Interrupts() ? -1 : NEXT(pread)(fd, to, Some(count), offset);
}
ssize_t pread64(int fd, void* to, size_t count, off64_t offset) {
  return Fails(fd) || Interrupts() ? -1 : NEXT(pread64)(fd, to, Some(count), offset);
}
ssize_t write(int fd, const void* from, size_t count) {
  return Interrupts() ? -1 : NEXT(write)(fd, from, Some(count));
}
ssize_t pwrite(int fd, const void* from, size_t count, off_t offset) {
  return Interrupts() ? -1 : NEXT(pwrite)(fd, from, Some(count), offset);
}
ssize_t pwrite64(int fd, const void* from, size_t count, off64_t offset) {
  return Interrupts() ? -1 : NEXT(pwrite64)(fd, from, Some(count), offset);
}
int fsync(int fd) { return Interrupts() ? -1 : NEXT(fsync)(fd); }
int syncfs(int fd) { return Interrupts() ? -1 : NEXT(syncfs)(fd); }
int rename(const char* from, const char* to) { return Interrupts() ? -1 : NEXT(rename)(from, to); }
