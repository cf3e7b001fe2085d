// vexa: an interactive calculator. With arguments it runs them once as one line;
// otherwise it greets and reads lines until "quit", "exit" or the end of input.
#include <cstdio>
#include <new>
#include <string>

#include "session/dispatch.hpp"
#include "session/editor.hpp"
#include "session/output.hpp"

// A line that needs more memory than there is, whether to read, to join or to
// run, fails as a line that does not evaluate does, and the session goes on.
template <class Step>
static bool within_memory(Step step) {
  try {
    return step();
  } catch (const std::bad_alloc&) {
    std::puts("Out of memory");
    return true;
  }
}

int main(int argc, char** argv) {
  output::install();
  if (argc > 1) {
    within_memory([&] {
      std::string line = argv[1];
      for (int i = 2; i < argc; ++i) line.append(" ").append(argv[i]);
      return run_line(line);
    });
    return 0;
  }
  std::puts("Type 'help' for help.\n");
  // An input that cannot be read (a directory, a closed descriptor) sets the
  // error indicator rather than end of file; it ends the session all the same,
  // as does output that can no longer be written.
  while (!std::feof(stdin) && !std::ferror(stdin) && !terminal_ended() && !output::failed()) {
    if (!within_memory([] { return run_line(read_line("> ")); })) break;
  }
  return 0;
}
