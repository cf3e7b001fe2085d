#include "calendar/calendar.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
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
  };
  for (const auto& c : cases)
    EXPECT_EQ((calendar{c.seconds}.format(c.pattern, c.offset)), c.text) << c.seconds << c.pattern;
}

// The proleptic Gregorian date of a day count by whole 400-year eras, as an
// independent reference; years beyond 32 bits are out of range.
std::string reference(double t) {
  long long s = std::floor(t), days = (s >= 0 ? s : s - 86399) / 86400, z = days + 719468;
  long long era = (z >= 0 ? z : z - 146096) / 146097, doe = z - era * 146097;
  long long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  long long doy = doe - (365 * yoe + yoe / 4 - yoe / 100), mp = (5 * doy + 2) / 153;
  long long month = mp < 10 ? mp + 3 : mp - 9, year = yoe + era * 400 + (month <= 2);
  if (year < INT32_MIN || year > INT32_MAX) return "out of range";
  long long second = s - days * 86400;
  char buf[128];
  std::snprintf(buf, sizeof buf, "%lld-%02lld-%02lld %02lld:%02lld:%02lld %lld", year, month,
                doy - (153 * mp + 2) / 5 + 1, second / 3600, second / 60 % 60, second % 60,
                ((days + 4) % 7 + 7) % 7);
  return buf;
}

// Whole 400-year cycles are skipped rather than walked: days on either side of
// each skip's threshold, random times, and the ends of the 32-bit years.
TEST(Calendar, DatesMatchTheReference) {
  auto check = [](double t) {
    EXPECT_EQ(calendar{t}.format("%Y-%m-%d %H:%M:%S %w", 0), reference(t)) << std::fixed << t;
  };
  for (double t : {67767976233532792.0, 67767976233532800.0, -67768100567971200.0,
                   -67768100567971208.0})
    check(t);
  for (double days : {365, 366, 367, 146462, 146463, 292559, 292560, 730485366, 730485367})
    for (double t : {days * 86400, days * 86400 + 86399.5, -days * 86400, -days * 86400 - 0.5})
      check(t);
  std::mt19937_64 rng(146097);
  std::uniform_real_distribution<double> exponent(0, 16.8), fraction(0, 1);
  for (int i = 0; i < 4000; ++i)
    check((i % 2 ? -1 : 1) * (std::floor(std::pow(10, exponent(rng))) + (i % 3 ? 0 : fraction(rng))));
}

}  // namespace
