// Key handling driven by byte strings: the line, the cursor and what the terminal must do after the last key.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "session/editor.hpp"

namespace {

TEST(Editor, KeysFromAFreshLine) {
  const std::vector<std::string> history = {"", "1+1", "2+2"};
  const struct { const char *keys, *line; std::size_t cursor; key_action last; } cases[] = {
      {"abc\x1b[D\x1b[DX", "aXbc", 2, key_action::redraw}, {"abc\x1b[D\x1b[DX\x7f", "abc", 1, key_action::redraw},
      {"ab\x1b[D\x1b[D\x1b[D\x7f\x7f", "ab", 0, key_action::redraw},  // nothing before the start
      {"ab\x1b[C\x1b[C", "ab", 2, key_action::redraw},  // nothing after the end
      {"abc\x01\x1b[3~\x1b[F\x1b[3~", "bc", 2, key_action::redraw}, {"abc\x1b[H\x05", "abc", 3, key_action::redraw},
      {"abc\x1b[D\x1b\x1b", "", 0, key_action::redraw},
      {"ab\x1b" "a", "ab", 2, key_action::redraw},  // the byte after Escape is consumed
      {"ab\x1b[1~", "ab~", 3, key_action::redraw},  // "1" consumed, "~" is text
      {"ab\x1b[3x", "ab", 2, key_action::redraw}, {"ab\x1b[", "ab", 2, key_action::pending},
      {"x\x1b[A", "2+2", 3, key_action::redraw},
      {"\x1b[A\x1b[A\x1b[A", "", 0, key_action::redraw},  // past the oldest, back to the empty entry
      {"\x1b[B\x1b[B\x1b[B\x1b[B", "1+1", 3, key_action::redraw},
      {"\t\x04\x80", "\t\x04\x80", 3, key_action::redraw}, {"a\x03", "a", 1, key_action::interrupt},
      {"a\x1a", "a", 1, key_action::suspend}, {"a\x0c", "a", 1, key_action::clear_screen},
      {"a\r", "a", 1, key_action::enter}, {"a\n", "a", 1, key_action::enter},
  };
  for (const auto& k : cases) {
    line_editor e;
    key_action last = key_action::redraw;
    for (const char* c = k.keys; *c; ++c) last = edit_key(e, static_cast<unsigned char>(*c), history);
    EXPECT_EQ(e.line + "|" + std::to_string(e.cursor) + "|" + std::to_string(int(last)),
              k.line + ("|" + std::to_string(k.cursor)) + "|" + std::to_string(int(k.last))) << k.keys;
  }
}

}  // namespace
