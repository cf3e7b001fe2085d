// vexa: an interactive calculator. With arguments it runs them once as one line;
// otherwise it greets and reads lines until "quit", "exit" or the end of input.
#include <cstdio>
#include <string>

#include "session/dispatch.hpp"
#include "session/editor.hpp"

int main(int argc, char** argv) {
  if (argc > 1) {
    std::string line = argv[1];
    for (int i = 2; i < argc; ++i) line += std::string(" ") + argv[i];
    run_line(line);
    return 0;
  }
  std::puts("Type 'help' for help.\n");
  // An input that cannot be read (a directory, a closed descriptor) sets the
  // error indicator rather than end of file; it ends the session all the same.
  while (!std::feof(stdin) && !std::ferror(stdin) && !terminal_ended())
    if (!run_line(read_line("> "))) break;
  return 0;
}
