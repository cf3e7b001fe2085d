// Arbitrary key bytes through the line editor's key handling: the cursor must stay
// within the line and the history index within the history.
#include "session/editor.hpp"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::vector<std::string> history = {"", "1+1", "a much longer line", "x"};
  line_editor e;
  for (size_t i = 0; i < size; ++i) {
    key_action action = edit_key(e, data[i], history);
    if (action == key_action::enter) e = line_editor();
    if (e.cursor > e.line.size() || e.index >= history.size())
      std::abort();
  }
  return 0;
}
