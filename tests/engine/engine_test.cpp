#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "vexa/parser.hpp"

namespace {

struct value_case {
  const char* text;
  double value;
};

// Lines are run in order through one parser, so each may rely on the ones before.
void expect_values(const std::vector<value_case>& cases) {
  vexa::parser p;
  for (const value_case& c : cases) {
    double v = -12345;
    ASSERT_TRUE(p.parse(c.text, v)) << c.text << ": " << p.error;
    EXPECT_DOUBLE_EQ(v, c.value) << c.text;
  }
}

TEST(Engine, PrecedenceAndAssociativity) {
  expect_values({
      {"2 + 3", 5}, {"2*(3+4)", 14}, {"((2))", 2}, {"1+2*3", 7}, {"2^3^2", 512},
      {"8/2*4", 16}, {"10-4-3", 3}, {"2*3^2", 18}, {"5!3*2", 40}, {"3*-2", -6},
      {"-.5+1", 0.5}, {"2^-1", 0.5}, {"0.5", 0.5}, {".5", 0.5}, {"1\t+\r2\n", 3},
  });
}

TEST(Engine, FallingProductAndRemainder) {
  expect_values({
      {"5!3", 20}, {"5!0", 120}, {"4!2!1", 479001600}, {"5!5", 5}, {"5!9", 5},
      {"0!0", 0}, {"3!0", 6}, {"4.5!2", 13.5}, {"7%3", 1}, {"-7%3", -1},
      {"7.5%2", 1.5}, {"5%0", 5}, {"10%3*2", 2},
      // The 32-bit counter stops at its bottom instead of wrapping, and in time.
      {"3!-3000000000", 0}, {"5!-1", 0}, {"-1!-3000000000", INFINITY},
  });
}

// Products that reach 0 or infinity are finished without walking every factor;
// the sign, and the very NaN that inf*0 gives on this machine, must be those of
// the full walk.
TEST(Engine, FallingProductMatchesFullWalk) {
  auto walk = [](double a, double b) {
    double r = a;
    for (long long k = vexa::to_int32(a - 1); k > b; --k) r *= static_cast<double>(k);
    return r;
  };
  auto bits = [](double x) {
    uint64_t u;
    std::memcpy(&u, &x, sizeof u);
    return u;
  };
  const double lefts[] = {0, 1, 2, 3, 5, -1, -2, -3, 0.5, 1.5, -0.5, 7.25, -7, 1e-300, -1e300,
                          171, 200};
  for (double a : lefts)
    for (double b = -60; b < 60; b += 0.5)
      EXPECT_EQ(bits(vexa::falling_product(a, b)), bits(walk(a, b))) << a << "!" << b;
  volatile double inf = INFINITY, zero = 0;
  EXPECT_EQ(bits(vexa::falling_product(INFINITY, -2)), bits(inf * zero));
  EXPECT_EQ(bits(vexa::falling_product(1e300, -1)), bits(inf * zero));
}

TEST(Engine, FunctionsConstantsAndNames) {
  expect_values({
      {"ans", 0}, {"pi", 3.1415926535}, {"e", 2.7182818284}, {"ln(e)", std::log(2.7182818284)},
      {"log(100)", 2}, {"sin(pi/2)", std::sin(3.1415926535 / 2)}, {"sin (0)", 0},
      {"abs(-3)", 3}, {"sqrt(16)+exp(0)", 5}, {"x = 4", 4}, {"y = x * 2", 8},
      {"a = b = 1", 1}, {"a + b", 2}, {"_v2 = 3", 3}, {"_v2", 3},
      // Evaluating "(1)" sets ans before the outer expression reads it.
      {"ans = 10", 10}, {"ans + (1)", 2},
      // "2 + x = 5" binds the empty name, which no expression can reach.
      {"2 + x = 5", 5}, {"x", 4},
      {"sin = 2", 2}, {"sin", 2},
  });
}

TEST(Engine, IeeeResults) {
  vexa::parser p;
  double v;
  ASSERT_TRUE(p.parse("1/0", v));
  EXPECT_TRUE(std::isinf(v));
  ASSERT_TRUE(p.parse("0/0", v));
  EXPECT_TRUE(std::isnan(v));
  ASSERT_TRUE(p.parse("-1!-1", v));  // no steps: the left operand itself
  EXPECT_EQ(v, -1);
}

struct error_case {
  const char* text;
  const char* error;
};

TEST(Engine, Messages) {
  const error_case cases[] = {
      {"", "Expression does not evaluate to a single value."},
      {"   ", "Expression does not evaluate to a single value."},
      {"2 # 3", "Illegal character at position 2: '#'\n"},
      {"2 3", "Unexpected character at position 2: '3'\n"},
      {"2.", "Unexpected character at position 2: ' '\n"},
      {"-", "Unexpected character at position 1: ' '\n"},
      {"2)", "Unmatched right-parenthesis at: 1\n"},
      {")", "Unexpected character at position 0: ')'\n"},
      {"(2", "Input does not evaluate to a single expression."},
      {"sin(1", "Input does not evaluate to a single expression."},
      {"foo(1)", "Unknown identifier: foo"},
      {"pi(1)", "Identifier is not a function: pi"},
      {"2 +", "No right-hand value for operator: +."},
      {"x =", "No right-hand value for operator: =."},
      {"3 + q", "Unknown identifier: q"},
      {"q", "Unknown identifier: q"},
      {"sin + 1", "Identifier cannot be used as a value: sin"},
      {"abs", "Identifier cannot be used as a value: abs"},
      {"(1+q)", "Unknown identifier: q"},
      {"2x", "Unexpected character at position 1: 'x'\n"},
      {"2(3)", "Unexpected character at position 1: '('\n"},
      {"(1)2", "Unexpected character at position 3: '2'\n"},
      {"5.", "Unexpected character at position 2: ' '\n"},
      {"1.2.3", "Unexpected character at position 3: '.'\n"},
      {"1e3", "Unexpected character at position 1: 'e'\n"},
      {"-x", "Unexpected character at position 1: 'x'\n"},
      {"- 5", "Unexpected character at position 1: ' '\n"},
      {"3 = x", "Unexpected character at position 2: '='\n"},
      {"(pi) = 3", "Unexpected character at position 5: '='\n"},
      {"x y", "Unexpected character at position 2: 'y'\n"},
      {"()", "Unexpected character at position 1: ')'\n"},
      {"2+)", "Unexpected character at position 2: ')'\n"},
      {"1,5", "Illegal character at position 1: ','\n"},
      {"\xc8", "Illegal character at position 0: '\xc8'\n"},
      {"1\v", "Illegal character at position 1: '\v'\n"},
  };
  vexa::parser p;
  for (const error_case& c : cases) {
    double v = 42;
    EXPECT_FALSE(p.parse(c.text, v)) << c.text;
    EXPECT_EQ(p.error, c.error) << c.text;
    EXPECT_EQ(v, 42) << "a failed line must leave the value alone: " << c.text;
  }
  // A NUL byte is part of the line and of its message.
  double v;
  EXPECT_FALSE(p.parse(std::string("1+\0", 3), v));
  EXPECT_EQ(p.error, std::string("Illegal character at position 2: '") + '\0' + "'\n");
}

TEST(Engine, DebugKeepsFollowOnLines) {
  const error_case cases[] = {
      {"(1+x)",
       "Unknown identifier: x\nUnable to resolve right-hand value.\n"
       "Failed to evaluate parenthetical expression."},
      {"3 + q", "Unknown identifier: q\nUnable to resolve right-hand value."},
      {"sin + 1", "Identifier cannot be used as a value: sin\nUnable to resolve left-hand value."},
      {"q", "Unknown identifier: q\nUnable to resolve value."},
      {"y = q", "Unknown identifier: q\nUnable to resolve right-hand value."},
      {"(q)", "Unknown identifier: q\nUnable to resolve value.\nFailed to evaluate parenthetical expression."},
  };
  vexa::parser p;
  p.debug = true;
  for (const error_case& c : cases) {
    double v;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(p.parse(c.text, v));
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(p.error, c.error) << c.text;
  }
}

TEST(Engine, DebugTraces) {
  vexa::parser p;
  p.debug = true;
  double v;
  testing::internal::CaptureStdout();
  ASSERT_TRUE(p.parse("1", v));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            std::string("[0][0](1) = 2\n[2][8]( ) = 5\n(1.000000,'',\0)\n", 44));
  testing::internal::CaptureStdout();
  EXPECT_FALSE(p.parse("1+a", v));
  std::string trace = testing::internal::GetCapturedStdout();
  EXPECT_NE(trace.find(std::string("(1.000000,'',+)->(0.000000,'a',\0)\n", 34)), std::string::npos);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(p.parse("2 3", v));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "[0][0](2) = 2\n[2][8]( ) = 5\n[5][0](3) = 15\n");  // the rejected step too
}

TEST(Engine, EffectsSurviveFailure) {
  vexa::parser p;
  double v;
  EXPECT_FALSE(p.parse("foo(y = 2)", v));
  EXPECT_EQ(p.error, "Unknown identifier: foo");
  ASSERT_TRUE(p.parse("y", v));
  EXPECT_EQ(v, 2);
  EXPECT_FALSE(p.parse("(7) + q", v));
  ASSERT_TRUE(p.parse("ans", v));
  EXPECT_EQ(v, 7);
  EXPECT_FALSE(p.parse("z = 3 + q", v));
  EXPECT_FALSE(p.parse("z", v));
  EXPECT_FALSE(p.parse("w = 1 q", v));
}

TEST(Engine, ResetRestoresBuiltins) {
  vexa::parser p;
  double v;
  ASSERT_TRUE(p.parse("sin = 2", v));
  EXPECT_FALSE(p.parse("sin(1)", v));
  EXPECT_EQ(p.error, "Identifier is not a function: sin");
  ASSERT_TRUE(p.parse("x = 5", v));
  ASSERT_TRUE(p.parse("pi = 3", v));
  p.ctx.reset();
  EXPECT_FALSE(p.parse("x", v));
  EXPECT_EQ(p.error, "Unknown identifier: x");
  ASSERT_TRUE(p.parse("sin(0) + pi", v));
  EXPECT_EQ(v, 3.1415926535);
  std::string order;
  for (const auto& entry : p.ctx) order += entry.first + " ";
  EXPECT_EQ(order, "abs acos ans asin atan cos e exp ln log pi sin sqrt tan time ");
}

TEST(Engine, TimeIsRefreshedOnEveryEvaluation) {
  vexa::parser p;
  double v;
  ASSERT_TRUE(p.parse("time = 5", v));
  ASSERT_TRUE(p.parse("time", v));
  EXPECT_GT(v, 1.7e9);
}

}  // namespace
