// An allocator to preload into vexa that fails one allocation on purpose:
//   VEXA_FAIL_ALLOCATION=N    the Nth allocation from main's first line on fails
//   VEXA_COUNT_ALLOCATIONS=F  at exit, the number made from main on goes to file F
// operator new and the C library's own buffers all come through these functions.
#include <dlfcn.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>

extern "C" void* __libc_malloc(size_t);
extern "C" void* __libc_calloc(size_t, size_t);
extern "C" void* __libc_realloc(void*, size_t);
extern "C" void* __libc_memalign(size_t, size_t);

namespace {

bool counting = false;  // not before main: the loader's allocations are not vexa's
unsigned long made = 0, failing = 0;
const char* count_file = nullptr;

bool fail_this_one() {
  if (!counting || ++made != failing) return false;
  errno = ENOMEM;
  return true;
}

using main_function = int (*)(int, char**, char**);
main_function real_main;

int counted_main(int argc, char** argv, char** envp) {
  const char* n = getenv("VEXA_FAIL_ALLOCATION");
  failing = n ? strtoul(n, nullptr, 10) : 0;
  count_file = getenv("VEXA_COUNT_ALLOCATIONS");
  unsetenv("LD_PRELOAD");  // the shell that "clear" starts allocates as it likes
  counting = true;
  return real_main(argc, argv, envp);
}

__attribute__((destructor)) void write_count() {
  counting = false;
  if (FILE* f = count_file ? fopen(count_file, "w") : nullptr) fprintf(f, "%lu\n", made), fclose(f);
}

}  // namespace

extern "C" {

// The program's entry calls this before main: main is swapped for counted_main.
int __libc_start_main(main_function main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*rtld_fini)(), void* stack_end) {
  using start_function = int (*)(main_function, int, char**, void (*)(), void (*)(), void (*)(), void*);
  real_main = main;
  auto real_start = reinterpret_cast<start_function>(dlsym(RTLD_NEXT, "__libc_start_main"));
  return real_start(counted_main, argc, argv, init, fini, rtld_fini, stack_end);
}

void* malloc(size_t n) noexcept { return fail_this_one() ? nullptr : __libc_malloc(n); }
void* calloc(size_t k, size_t n) noexcept { return fail_this_one() ? nullptr : __libc_calloc(k, n); }
void* memalign(size_t a, size_t n) noexcept { return fail_this_one() ? nullptr : __libc_memalign(a, n); }
void* aligned_alloc(size_t a, size_t n) noexcept { return memalign(a, n); }

void* realloc(void* p, size_t n) noexcept {
  bool frees = p && n == 0;
  return !frees && fail_this_one() ? nullptr : __libc_realloc(p, n);
}

int posix_memalign(void** out, size_t a, size_t n) noexcept {
  if (a % sizeof(void*) != 0 || (a & (a - 1)) != 0) return EINVAL;
  void* p = memalign(a, n);
  return p ? (*out = p, 0) : ENOMEM;
}

}  // extern "C"
