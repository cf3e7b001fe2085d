#include "base/random.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>

#include "base/text.hpp"

namespace {

const std::string alphabet = "abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRTUVWXY346789";

TEST(Random, RandstrLengthAndAlphabet) {
  for (int n : {1, 64}) {
    std::string s = base::randstr(n);
    ASSERT_EQ(s.size(), std::size_t(n));
    EXPECT_EQ(s.find_first_not_of(alphabet), std::string::npos) << s;
  }
  // 4000 draws miss one of 52 characters with odds of about e^-77, so a missing
  // one means the index never reaches it; the scan also checks the alphabet.
  std::string s = base::randstr(4000);
  EXPECT_EQ(s.find_first_not_of(alphabet), std::string::npos);
  for (char c : alphabet) EXPECT_NE(s.find(c), std::string::npos) << c;
}

TEST(Random, RandstrOfZeroOrLessDrawsNothing) {
  std::srand(12345);
  int expected = std::rand();
  std::srand(12345);
  EXPECT_EQ(base::randstr(0), "");
  EXPECT_EQ(base::randstr(-5), "");
  EXPECT_EQ(std::rand(), expected);
}

TEST(Random, UuidLayoutAndBytes) {
  std::set<char> version, variant;
  for (int i = 0; i < 16; ++i) {
    unsigned char bytes[18];
    for (unsigned char& b : bytes) b = 0xa5;
    std::string text = base::uuid(bytes);
    ASSERT_EQ(text.size(), 36u);
    std::string digits;
    for (int k = 0; k < 36; ++k) {
      if (k == 8 || k == 13 || k == 18 || k == 23) {
        EXPECT_EQ(text[k], '-') << text;
      } else {
        EXPECT_NE(std::string("0123456789abcdef").find(text[k]), std::string::npos) << text;
        digits += text[k];
      }
    }
    EXPECT_EQ(base::hex(std::string(reinterpret_cast<char*>(bytes), 16)), digits);
    EXPECT_EQ(bytes[16], 0xa5) << "wrote past 16 bytes";
    version.insert(text[14]);
    variant.insert(text[19]);
  }
  // No version or variant bits: these digits vary like all others.
  EXPECT_GT(version.size(), 1u);
  EXPECT_GT(variant.size(), 4u);
}

// Each call reseeds from the random device, so a generator left in the same state
// does not repeat the text.
TEST(Random, UuidReseedsEveryCall) {
  std::srand(1);
  std::string first = base::uuid(nullptr);
  std::srand(1);
  EXPECT_NE(base::uuid(nullptr), first);
}

}  // namespace
