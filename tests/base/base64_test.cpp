#include "base/base64.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace std::string_literals;

TEST(Base64, EncodesRfc4648VectorsWithPadding) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}, {"\xff\xff\xff", "////"}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(base::base64(bytes), text) << bytes;
}

TEST(Base64, DecodesLenientlyAndWarnsOnlyAboutIncompleteGroups) {
  const struct { std::string text, bytes; bool warns; } cases[] = {
      {"Zm9vYmFy", "foobar", false}, {"Zg==", "f", false}, {"Zm8=", "fo", false}, {"", "", false},
      {"Zm9vY", "foo", true}, {"Zm9vYmE", "foo", true},
      {"Zg==Zm8=", "ffo", false},                               // padding does not end the text
      {"Zm9v\0Zm8="s, "foo", false}, {"Zm9vZ\0m8="s, "foo", true},  // a zero byte does
      {"/=//", "\xfc\x0f\xff", false}, {"====", "\0"s, false},  // "=" in place 1 or 2 is 64
      {"    ", "\x04\x10" "A", false}, {"\x80\xff\xc3\xa9", "\x04\x10" "A", false},  // 65
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(base::unbase64(c.text), c.bytes) << c.text;
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              c.warns ? "Warning: input string length not multiple of 4.\n" : "") << c.text;
  }
}

TEST(Base64, RandomBytesRoundTripAtEveryLength) {
  std::mt19937 rng(4648);
  for (std::size_t n = 0; n <= 130; ++n) {
    std::string bytes(n, '\0');
    for (char& b : bytes) b = static_cast<char>(rng());
    std::string text = base::base64(bytes);
    EXPECT_EQ(text.size(), (n + 2) / 3 * 4);
    EXPECT_EQ(base::unbase64(text), bytes) << n;
  }
}
