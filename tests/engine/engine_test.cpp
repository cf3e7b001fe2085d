#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "base/digest.hpp"
#include "base/text.hpp"
#include "vexa/parser.hpp"

using namespace std::string_literals;

namespace {

// The value of `text` in `p` printed with %.12g, or the message of its failure.
std::string run(vexa::parser& p, const std::string& text) {
  double v = -12345;
  if (!p.parse(text, v)) return v == -12345 ? p.error : "value changed by a failure";
  char buf[64];
  return std::string(buf, std::snprintf(buf, sizeof buf, "%.12g", v));
}

// Lines run in order through one parser, so each may rely on the ones before.
TEST(Engine, Lines) {
  const char* const cases[][2] = {
      {"ans", "0"}, {"2*(3+4)", "14"}, {"1+2*3", "7"}, {"2^3^2", "512"}, {"8/2*4", "16"},
      {"10-4-3", "3"}, {"2*3^2", "18"}, {"5!3*2", "40"}, {"3*-2", "-6"}, {"-.5+1", "0.5"},
      {"2^-1", "0.5"}, {"1\t+\r2\n", "3"}, {"4!2!1", "479001600"}, {"3!-3000000000", "0"},
      {"-1!-3000000000", "inf"}, {"-1!-2147483648", "-inf"}, {"-7%3", "-1"}, {"7.5%2", "1.5"},
      {"5%0", "5"}, {"10%3*2", "2"}, {"10000000000%3", "3557549059"}, {"-10000000000%3", "-3557549056"},
      {"pi", "3.1415926535"}, {"e", "2.7182818284"}, {"ln(e)", "0.999999999978"}, {"log(100)", "2"},
      {"sin (pi/2)", "1"}, {"cos(0)+tan(0)+asin(0)+acos(1)+atan(0)", "1"}, {"abs(-3)+sqrt(16)+exp(0)", "8"},
      {"x = 4", "4"}, {"y = x * 2", "8"}, {"a = b = 1", "1"}, {"a + b", "2"}, {"_v2=3", "3"},
      {"ans = 10", "10"}, {"ans + (1)", "2"},  // the group sets ans before the sum reads it
      {"2 + x = 5", "5"}, {"x", "4"},  // binds the empty name, which nothing can reach
      {"sin = 2", "2"}, {"sin", "2"}, {"sin(1)", "Identifier is not a function: sin"},
      // Effects of a line stay when it fails later.
      {"foo(z = 2)", "Unknown identifier: foo"}, {"z", "2"}, {"(7) + q", "Unknown identifier: q"},
      {"ans", "7"}, {"w = 3 + q", "Unknown identifier: q"}, {"w", "Unknown identifier: w"},
  };
  vexa::parser p;
  for (const auto& c : cases) EXPECT_EQ(run(p, c[0]), c[1]) << c[0];
}

TEST(Engine, Messages) {
  const char* const cases[][3] = {  // text, message, what debug adds to it
      {"", "Expression does not evaluate to a single value."},
      {"1 + 2 x", "Unexpected character at position 6: 'x'\n"}, {"2)", "Unmatched right-parenthesis at: 1\n"},
      {"=1", "Unexpected character at position 0: '='\n"}, {"pi(1)", "Identifier is not a function: pi"},
      {"2 # 3", "Illegal character at position 2: '#'\n"},
      {"sin(1", "Input does not evaluate to a single expression."},
      {"2!", "No right-hand value for operator: !."}, {"2^", "No right-hand value for operator: ^."},
      {"2*", "No right-hand value for operator: *."}, {"2 +", "No right-hand value for operator: +."},
      {"x =", "No right-hand value for operator: =."},
      {"3 + q", "Unknown identifier: q", "\nUnable to resolve right-hand value."},
      {"y = q", "Unknown identifier: q", "\nUnable to resolve right-hand value."},
      {"sin + 1", "Identifier cannot be used as a value: sin", "\nUnable to resolve left-hand value."},
      {"q", "Unknown identifier: q", "\nUnable to resolve value."},
      {"(1+x)", "Unknown identifier: x",
       "\nUnable to resolve right-hand value.\nFailed to evaluate parenthetical expression."},
  };
  vexa::parser quiet, debug;
  debug.debug = true;
  for (const auto& c : cases) {
    EXPECT_EQ(run(quiet, c[0]), c[1]) << c[0];
    testing::internal::CaptureStdout();
    std::string got = run(debug, c[0]);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(got, c[1] + std::string(c[2] ? c[2] : "")) << c[0];
  }
  EXPECT_EQ(run(quiet, "1+\0"s), "Illegal character at position 2: '\0'\n"s);
}

// The debug trace shows each step of the automaton and the operands it leaves: every state reached, fed
// every byte, gives the traces of the tables as first checked against their definition.
TEST(Engine, TokenizerTraces) {
  vexa::parser p;
  p.debug = true;
  std::string traces;
  for (const char* state : {"", "-", "1", ".", "1.5", "1 ", "1+", "x=", "x", "x ", "(", "( ", "(1)", "(1) "})
    for (int c = 1; c < 256; ++c) {
      testing::internal::CaptureStdout();
      run(p, state + std::string(1, char(c)) + "+a");
      traces += testing::internal::GetCapturedStdout();
    }
  EXPECT_EQ(base::hex(base::sha256(traces)), "1c89470310d972f6d8772f2d8777ba661ed1e44a8cd1688354bf9fcfccb28c49");
}

// Products that reach 0 or infinity stop early; the result, down to the NaN of inf*0, is the full walk's.
TEST(Engine, FallingProductMatchesFullWalk) {
  auto walk = [](double a, double b) {
    for (long long k = vexa::to_int32(a - 1); k > b; --k) a *= static_cast<double>(k);
    return a;
  };
  auto bits = [](double x) { uint64_t u; std::memcpy(&u, &x, sizeof u); return u; };
  for (double a : {0.0, 1.0, 2.0, 5.0, -1.0, -2.0, -3.0, 0.5, -0.5, -1.0 / 6, 7.25, 1e-300, -1e300, 171.0})
    for (double b = -60; b < 60; b += 0.5)
      EXPECT_EQ(bits(vexa::falling_product(a, b)), bits(walk(a, b))) << a << "!" << b;
  volatile double inf = INFINITY, zero = 0;
  EXPECT_EQ(bits(vexa::falling_product(INFINITY, -2)), bits(inf * zero));
  EXPECT_EQ(bits(vexa::falling_product(1e300, -1)), bits(inf * zero));
  EXPECT_TRUE(std::isnan(vexa::falling_product(NAN, -3e9)));  // NaN stops the walk: no 2^31 steps
}

// Each operation rounds once, to a double: answers that a wider register (x87)
// rounding twice gets wrong, and C library functions that need its full width.
TEST(Engine, DoublesRoundOnceOnEveryMachine) {
  const char* const cases[][2] = {
      {"649.108276674106/390.2016536834306", "0x1.a9dc734b852a5p+0"},
      {"18.779111069717924*434.7399559436888", "0x1.fe407a8c76273p+12"},
      {"310.22871770103524-769.383968222899", "-0x1.cb27be7f8a177p+8"},
      {"874.5524316305383*762.8556453542205", "0x1.45c2a84ede939p+19"},
      {"10000000000!2147483645", "0x1.2a05f1f903dc6p+95"},  // past a double's range and back
      {"171!-1", "nan"},  // infinity times 0, whatever its sign
      {"exp(20)", "0x1.ceb088b68e804p+28"}, {"12.34^2.5", "0x1.0b759cc1408e2p+9"},  // the C library's own
  };
  vexa::parser p;
  for (const auto& c : cases) {
    double v = 0;
    char bits[32];
    ASSERT_TRUE(p.parse(c[0], v)) << c[0];
    if (std::strcmp(c[1], "nan") == 0) EXPECT_TRUE(std::isnan(v)) << c[0];
    else EXPECT_STREQ((std::snprintf(bits, sizeof bits, "%a", v), bits), c[1]) << c[0];
  }
}

// Literals of up to 15 digits skip strtod; their values must be its values, bit for bit.
TEST(Engine, NumberLiteralsReadAsStrtodReadsThem) {
  std::vector<std::string> literals = {"0", "-0", ".5", "-.5", "0.1", "123456789012345", "1234567890123456",
                                       "999999999999999.9", "0.000000000000001", "-3.000000000000000001"};
  uint64_t seed = 1;
  for (int i = 0; i < 20000; ++i) {
    seed = seed * 6364136223846793005u + 1442695040888963407u;
    std::string digits = std::to_string(seed >> 20).substr(0, 1 + (seed >> 8) % 17);
    size_t point = (seed >> 4) % (digits.size() + 1);
    literals.push_back((seed & 1 ? "-" : "") + digits.substr(0, point) + (point < digits.size() ? "." : "") +
                       digits.substr(point));
  }
  for (const std::string& text : literals) {
    double quick = vexa::number_value(text.c_str(), text.size()), slow = std::strtod(text.c_str(), nullptr);
    EXPECT_EQ(std::memcmp(&quick, &slow, sizeof quick), 0) << text;
  }
}

}  // namespace
