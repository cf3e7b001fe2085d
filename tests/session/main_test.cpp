// The session's internals that cannot be reached from outside in reasonable time.
#define VEXA_NO_MAIN
#include "main.cpp"

#include <gtest/gtest.h>

namespace {

TEST(Verify, GivesUpWhenTheCountRunsOut) {
  const std::string start(64, 'a');
  const std::string unreachable(64, '0');
  testing::internal::CaptureStdout();
  verify(start + ":" + unreachable, 3);
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.rfind("Not found after 3 hashes in ~", 0), 0u) << out;
}

TEST(Editor, KeysKeepTheCursorInsideTheLine) {
  const std::vector<std::string> history = {"", "12345"};
  struct {
    const char* keys;
    const char* line;
    long cursor;
  } cases[] = {
      {"abc\x1b[D\x1b[DX", "aXbc", 2},
      {"abc\x1b[D\x1b[DX\x7f", "abc", 1},
      {"\x7f\x1b[D\x1b[3~", "", 0},
      {"ab\x1b[C\x1b[C", "ab", 2},
      {"\x1b[A\x01\x1b[3~", "2345", 0},
      {"\x1b[A\x1b[A\x1b[A", "12345", 5},
      {"abc\x1b\x1b", "", 0},
      {"abc\x1b" "a", "abc", 3},
      {"ab\x1b[1~", "ab~", 3},
  };
  for (const auto& c : cases) {
    line_editor e;
    for (const char* k = c.keys; *k; ++k) edit_key(e, static_cast<unsigned char>(*k), history);
    EXPECT_EQ(e.line, c.line) << c.keys;
    EXPECT_EQ(e.cursor, c.cursor) << c.keys;
  }
}

}  // namespace
