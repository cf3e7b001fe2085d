#include "calendar/calendar.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace {

const char* const session = "%Y-%m-%d %I:%M:%S %p %a";
const double inf = std::numeric_limits<double>::infinity();
// Start of year 2^31 and of year -2^31; neighbouring doubles are 8 s apart there.
const double year_2p31 = 67767976233532800.0, year_m2p31 = -67768100567971200.0;

TEST(Calendar, FormatsByPatternOrGivesAShortTextForTimesWithoutADate) {
  const struct { double seconds; int offset; const char *pattern, *text; } cases[] = {
      {0, 0, session, "1970-01-01 00:00:00 AM Thu"},
      {3600, 0, session, "1970-01-01 01:00:00 AM Thu"},
      {43200, 0, session, "1970-01-01 12:00:00 PM Thu"},
      {46800, 0, session, "1970-01-01 01:00:00 PM Thu"},
      {-1, 0, session, "1969-12-31 11:59:59 PM Wed"},
      {-0.5, 0, session, "1969-12-31 11:59:59 PM Wed"},
      {951782400, 0, session, "2000-02-29 00:00:00 AM Tue"},
      {1e9, 0, session, "2001-09-09 01:46:40 AM Sun"},
      {2147483647, 0, session, "2038-01-19 03:14:07 AM Tue"},
      {4102444800, 0, session, "2100-01-01 00:00:00 AM Fri"},
      {1234567890, 0, "%A %B %d %y %w %x %X %H", "Friday February 13 09 5 2009/02/13 23:31:30 23"},
      {-2203977600, 0, "%x %a %b", "1900/02/28 Wed Feb"},
      {-2203891200, 0, "%x %a", "1900/03/01 Thu"},
      {951696000, 0, "%x %a", "2000/02/28 Mon"}, {951782400, 0, "%x %a", "2000/02/29 Tue"},
      {-62135596801, 0, "%x %X %A|%Y", "0000/12/31 23:59:59 Sunday|0"},
      {-62167219201, 0, "%Y|%y|%x", "-1|-1|-001/12/31"},
      {0, 0, "%q", ""}, {0, 0, "100%", "100"}, {0, 0, "%%Y", "%Y"}, {0, 0, "%%%Y", "%1970"},
      {0, 0, "% Y", "Y"}, {0, 0, "a%%b", "a%b"}, {0, 0, "%Y%", "1970"}, {0, 0, "", ""},
      {0, 0, "%5%y%\x80", "70"}, {0, 3600, "%X", "01:00:00"}, {0, -1, "%X", "23:59:59"},
      {year_2p31 - 8, 0, "%x %X", "2147483647/12/31 23:59:52"},
      {year_m2p31, 0, "%x %X", "-2147483648/01/01 00:00:00"},
      {inf, 0, session, "inf"}, {-inf, 0, "", "-inf"}, {std::nan(""), 0, session, "nan"},
      {1e300, 0, session, "out of range"}, {-1e300, 0, session, "out of range"},
      {year_2p31, 0, "%Y", "out of range"}, {year_m2p31 - 8, 0, "%Y", "out of range"},
  };
  for (const auto& c : cases)
    EXPECT_EQ((calendar{c.seconds}.format(c.pattern, c.offset)), c.text) << c.seconds << c.pattern;
}

bool leap(int y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); }
int month_days(int m, int y) {
  const int days[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return m == 2 && leap(y) ? 29 : days[m];
}

// The plain walk, one step per year, as the reference for skipping whole cycles.
std::string walk(double t) {
  double m = std::floor(t / 60), h = std::floor(m / 60), D = std::floor(h / 24);
  int s, mi, hr, wd, year, month, day, length = 31;
  if (t >= 0) {
    s = int(std::fmod(t, 60)), mi = int(std::fmod(m, 60)), hr = int(std::fmod(h, 24));
    wd = int(std::fmod(D + 4, 7));
    for (year = 1970; D > 365; ++year) D -= leap(year) ? 366 : 365;
    for (month = 1; D >= length; length = month_days(month, year)) {
      D -= length;
      if (++month > 12) month = 1, ++year;
    }
    day = int(D) + 1;
  } else {
    s = int(std::fmod(t, 60) + 60) % 60, mi = int(std::fmod(m, 60) + 60) % 60;
    hr = int(std::fmod(h, 24) + 24) % 24, wd = int(std::fmod(D - 3, 7) + 7) % 7;
    for (year = 1969; D < -365; --year) D += leap(year) ? 366 : 365;
    for (month = 12; D <= -length; length = month_days(month, year)) {
      D += length;
      if (--month < 1) month = 12, --year;
    }
    day = length + int(D) + 1;
    if (day > length && (day = 1, ++month > 12)) month = 1, ++year;
  }
  char buf[64];
  std::snprintf(buf, sizeof buf, "%d-%02d-%02d %02d:%02d:%02d %d", year, month, day, hr, mi, s, wd);
  return buf;
}

TEST(Calendar, SkippingWholeCyclesMatchesTheYearByYearWalk) {
  std::mt19937_64 rng(146097);
  std::uniform_real_distribution<double> exponent(0, 13), fraction(0, 1);
  for (int i = 0; i < 4000; ++i) {
    double t = std::floor(std::pow(10, exponent(rng))) + (i % 3 ? 0 : fraction(rng));
    if (i % 2) t = -t;
    ASSERT_EQ(calendar{t}.format("%Y-%m-%d %H:%M:%S %w", 0), walk(t)) << t;
  }
}

}  // namespace
