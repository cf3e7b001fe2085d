#include "session/output.hpp"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "base/file.hpp"

namespace output {

namespace {

bool broken = false;
std::FILE* original_stdout = nullptr;

// The bytes written, or 0 once a write has failed: stdio then sets the stream's
// error indicator, which the commands check.
ssize_t write_all(void*, const char* bytes, size_t n) {
  size_t done = 0;
  while (!broken && done < n) {
    ssize_t wrote = ::write(1, bytes + done, n - done);
    if (wrote > 0) done += static_cast<size_t>(wrote);
    else if (wrote < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) base::wait_until_ready(1, POLLOUT);
    else if (!(wrote < 0 && errno == EINTR)) broken = true;
  }
  return static_cast<ssize_t>(done);
}

// A handler rather than SIG_IGN: the disposition of a handled signal is not
// passed on to the programs vexa starts (the shell of "clear").
void ignore(int) {}

}  // namespace

void install() {
  struct sigaction action = {};
  action.sa_handler = ignore;
  action.sa_flags = SA_RESTART;
  sigaction(SIGPIPE, &action, nullptr);
  cookie_io_functions_t functions = {nullptr, write_all, nullptr, nullptr};
  if (std::FILE* stream = fopencookie(nullptr, "w", functions)) {
    // Line by line to a terminal, in large blocks to anything else, as before.
    setvbuf(stream, nullptr, isatty(1) ? _IOLBF : _IOFBF, BUFSIZ);
    original_stdout = stdout;
    stdout = stream;
    // Flushed and freed at exit, after every later static is gone.
    std::atexit([] {
      std::fclose(stdout);
      stdout = original_stdout;
    });
  }
}

bool failed() { return broken || std::ferror(stdout); }

int descriptor_of(std::FILE* stream) { return stream == stdout && original_stdout ? 1 : fileno(stream); }

}  // namespace output
