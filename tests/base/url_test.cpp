#include "base/url.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

using namespace std::string_literals;

TEST(Url, EncodesEveryByteLikeEncodeUriAndEncodeUriComponent) {
  const std::string kept =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.!~*'()";
  const std::string reserved = ";,/?:@&=+$#";
  for (bool component : {false, true}) {
    for (int c = 0; c < 256; ++c) {
      std::string byte(1, static_cast<char>(c));
      char escaped[4];
      std::snprintf(escaped, sizeof escaped, "%%%02X", c);
      bool stays = kept.find(byte) != std::string::npos ||
                   (!component && reserved.find(byte) != std::string::npos);
      EXPECT_EQ(base::url_encode(byte, component), stays ? byte : escaped) << c << component;
    }
  }
}

TEST(Url, EncodesAndDecodesTexts) {
  const struct { bool encode, flag; std::string in, out; } cases[] = {
      {true, false, "a b&c/d", "a%20b&c/d"}, {true, true, "a b&c/d", "a%20b%26c%2Fd"},
      {true, false, "100%\xc3\xbc", "100%25%C3%BC"}, {true, true, "", ""},
      {false, false, "a%20b", "a b"}, {false, false, "%41%42", "AB"}, {false, false, "%4a", "J"},
      {false, false, "x+y", "x+y"}, {false, true, "x+y", "x y"}, {false, true, "", ""},
      // Incomplete escapes stay; malformed ones go through the digit arithmetic.
      {false, false, "100%", "100%"}, {false, false, "%4", "%4"}, {false, true, "%+", "% "},
      {false, false, "%zz", "S"}, {false, false, "%%41", "T1"}, {false, false, "% !", "\xf1"},
      {false, false, "%00x", "\0x"s},
  };
  for (const auto& c : cases)
    EXPECT_EQ(c.encode ? base::url_encode(c.in, c.flag) : base::url_decode(c.in, c.flag), c.out)
        << c.in;
}

TEST(Url, RandomBytesRoundTripUnderBothFlags) {
  std::mt19937 rng(3986);
  for (int n = 0; n < 200; ++n) {
    std::string bytes(n, '\0');
    for (char& b : bytes) b = static_cast<char>(rng());
    EXPECT_EQ(base::url_decode(base::url_encode(bytes, false), false), bytes);
    EXPECT_EQ(base::url_decode(base::url_encode(bytes, true), true), bytes);
  }
}
