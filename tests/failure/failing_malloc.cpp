// An allocator to preload into vexa that fails one allocation on purpose.
//   VEXA_FAIL_ALLOCATION=N   the Nth allocation made from main's first line on
//                            returns null (ENOMEM); 0 or unset fails none
//   VEXA_COUNT_ALLOCATIONS=F at exit, the number of allocations made from main
//                            on is written to the file F
// Every allocating entry point of the C library is covered; operator new and
// the C library's own buffers (stdio, tmpfile, fopencookie) come through them.
// Allocations before main (the loader, static constructors) are not counted:
// they are no part of what vexa can answer for.
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
}

namespace {

bool counting = false;
unsigned long made = 0;
unsigned long failing = 0;
const char* count_file = nullptr;

// True when this allocation is the one to fail.
bool fail_this_one() {
  if (!counting) return false;
  if (++made != failing) return false;
  errno = ENOMEM;
  return true;
}

using main_function = int (*)(int, char**, char**);
main_function real_main;

int counted_main(int argc, char** argv, char** envp) {
  const char* n = getenv("VEXA_FAIL_ALLOCATION");
  failing = n ? strtoul(n, nullptr, 10) : 0;
  count_file = getenv("VEXA_COUNT_ALLOCATIONS");
  // The programs vexa starts (the shell of "clear") allocate as they please.
  unsetenv("LD_PRELOAD");
  counting = true;
  return real_main(argc, argv, envp);
}

__attribute__((destructor)) void write_count() {
  if (!count_file) return;
  char text[32];
  int length = snprintf(text, sizeof text, "%lu\n", made);
  int fd = open(count_file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return;
  if (write(fd, text, static_cast<size_t>(length)) != length) made = 0;
  close(fd);
}

}  // namespace

extern "C" {

// The program's entry calls this before main: main is swapped for counted_main.
int __libc_start_main(main_function main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*rtld_fini)(), void* stack_end) {
  using start_function = int (*)(main_function, int, char**, void (*)(), void (*)(), void (*)(), void*);
  auto real_start = reinterpret_cast<start_function>(dlsym(RTLD_NEXT, "__libc_start_main"));
  real_main = main;
  return real_start(counted_main, argc, argv, init, fini, rtld_fini, stack_end);
}

void* malloc(size_t n) noexcept { return fail_this_one() ? nullptr : __libc_malloc(n); }

void* calloc(size_t count, size_t n) noexcept { return fail_this_one() ? nullptr : __libc_calloc(count, n); }

// realloc(p, 0) frees p: not an allocation.
void* realloc(void* p, size_t n) noexcept {
  if (p && n == 0) return __libc_realloc(p, n);
  return fail_this_one() ? nullptr : __libc_realloc(p, n);
}

void* memalign(size_t alignment, size_t n) noexcept {
  return fail_this_one() ? nullptr : __libc_memalign(alignment, n);
}

void* aligned_alloc(size_t alignment, size_t n) noexcept { return memalign(alignment, n); }

void* valloc(size_t n) noexcept { return memalign(static_cast<size_t>(sysconf(_SC_PAGESIZE)), n); }

void* pvalloc(size_t n) noexcept {
  size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return memalign(page, (n + page - 1) / page * page);
}

int posix_memalign(void** out, size_t alignment, size_t n) noexcept {
  if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0) return EINVAL;
  int saved = errno;
  void* p = memalign(alignment, n);
  if (!p) return ENOMEM;
  errno = saved;
  *out = p;
  return 0;
}

}  // extern "C"
