// The line editor: reads one line from a terminal byte by byte, with cursor keys,
// history and screen clearing, or plainly from any other input.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

// One call's editing state. `escape` holds the bytes of an escape sequence that
// is still being read.
struct line_editor {
  std::string line;
  std::size_t cursor = 0;  // 0 to the line's length, which stands for after its last byte
  std::size_t index = 0;   // into the history; 0 is the empty entry
  std::string escape;
};

enum class key_action { pending, redraw, enter, interrupt, suspend, clear_screen };

// Applies one input byte to the editor; no input or output happens here, so the
// key handling can be driven by plain byte strings.
key_action edit_key(line_editor& e, unsigned char c, const std::vector<std::string>& history);

// Shows the prompt and returns the next line without its line end; edits on a
// terminal, otherwise reads through read_line_lazy.
std::string read_line(const std::string& prompt);

// Reads up to a line feed or the end of input, dropping carriage returns.
std::string read_line_lazy(const std::string& prompt);

// True once the terminal has delivered no more bytes (it hung up).
bool terminal_ended();
