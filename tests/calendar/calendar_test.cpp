#include "calendar/calendar.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <random>
#include <string>

namespace {

TEST(Calendar, Patterns) {
  const struct { double seconds; int offset; const char *pattern, *text; } cases[] = {
      {1234567890, 0, "%A %B %d %y %w %x %X %H %I %p|%a %b %Y %m %M %S", "Friday February 13 09 5 "
       "2009/02/13 23:31:30 23 11 PM|Fri Feb 2009 02 31 30"},
      {0, 0, "%I %p", "00 AM"}, {43200, 0, "%I %p", "12 PM"}, {46800, 0, "%I %p", "01 PM"},
      {-62167219201, 0, "%Y|%y|%x", "-1|-1|-001/12/31"}, {-0.5, 0, "%X", "23:59:59"},
      {0, 0, "%q|100%", "|100"}, {0, 0, "%%Y|%%%Y|% Y|a%%b|%Y%", "%Y|%1970|Y|a%b|1970"},
      {0, 0, "", ""}, {0, 0, "%5%y%\x80", "70"}, {0, 3600, "%X", "01:00:00"}, {0, -1, "%X", "23:59:59"},
      {INFINITY, 0, "%Y", "inf"}, {-INFINITY, 0, "", "-inf"}, {NAN, 0, "%Y", "nan"},
      {1e300, 0, "%Y", "out of range"}, {-1e300, 0, "%Y", "out of range"},
      // The ends of the 32-bit years.
      {67767976233532792.0, 0, "%Y-%m-%d %X %w", "2147483647-12-31 23:59:52 2"},
      {67767976233532800.0, 0, "%Y", "out of range"},
      {-67768100567971200.0, 0, "%Y-%m-%d %X %w", "-2147483648-01-01 00:00:00 2"},
      {-67768100567971208.0, 0, "%Y", "out of range"},
  };
  for (const auto& c : cases)
    EXPECT_EQ((calendar{c.seconds}.format(c.pattern, c.offset)), c.text) << c.seconds << c.pattern;
}

// The C library's date of the same second: an independent reference for the years it can hold.
std::string reference(double t) {
  time_t s = static_cast<time_t>(std::floor(t));
  struct tm tm;
  char buf[128];
  if (!gmtime_r(&s, &tm)) return "out of range";
  return std::string(buf, std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S %w", &tm));
}

// Whole 400-year cycles are skipped, not walked: days on either side of each threshold, random times.
TEST(Calendar, DatesMatchTheReference) {
  auto check = [](double t) {
    EXPECT_EQ(calendar{t}.format("%Y-%m-%d %H:%M:%S %w", 0), reference(t)) << std::fixed << t;
  };
  for (double days : {365, 366, 367, 146462, 146463, 292559, 292560, 730485366, 730485367})
    for (double t : {days * 86400, days * 86400 + 86399.5, -days * 86400, -days * 86400 - 0.5})
      check(t);
  std::mt19937_64 rng(146097);
  std::uniform_real_distribution<double> exponent(0, 16.8), fraction(0, 1);
  for (int i = 0; i < 4000; ++i)
    check((i % 2 ? -1 : 1) * (std::floor(std::pow(10, exponent(rng))) + (i % 3 ? 0 : fraction(rng))));
}

}  // namespace
