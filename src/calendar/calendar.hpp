// A time in seconds since 1970-01-01 00:00:00 that formats itself with its own
// proleptic Gregorian arithmetic: no C time functions, no zones, no locale.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

class calendar {
 public:
  double seconds;

  // Infinite and NaN times, and times whose year does not fit an int32_t, have no
  // date: the whole result is then "inf", "-inf", "nan" or "out of range",
  // whatever the pattern, so that "gmtime inf" says plainly why there is no date.
  std::string format(const std::string& pattern, int offset) const {
    double t = offset + seconds;
    if (std::isnan(t)) return "nan";
    if (std::isinf(t)) return t > 0 ? "inf" : "-inf";
    // Beyond 1e17 s the year surely exceeds 32 bits; below it the day count is exact.
    if (!(std::fabs(t) < 1e17)) return "out of range";

    int64_t second, minute, hour, weekday, days;
    double m = std::floor(t / 60), h = std::floor(m / 60), d = std::floor(h / 24);
    if (t >= 0) {
      second = static_cast<int64_t>(std::fmod(t, 60));
      minute = static_cast<int64_t>(std::fmod(m, 60));
      hour = static_cast<int64_t>(std::fmod(h, 24));
      weekday = static_cast<int64_t>(std::fmod(d + 4, 7));
    } else {
      second = static_cast<int64_t>(std::fmod(t, 60) + 60) % 60;
      minute = static_cast<int64_t>(std::fmod(m, 60) + 60) % 60;
      hour = static_cast<int64_t>(std::fmod(h, 24) + 24) % 24;
      weekday = static_cast<int64_t>(std::fmod(d - 3, 7) + 7) % 7;
    }
    days = static_cast<int64_t>(d);

    int64_t year, month, day;
    // Every 400 Gregorian years hold 146097 days, so whole cycles are skipped while
    // the year-by-year walk would certainly still go on: the fields stay the same.
    const int64_t cycle = 146097;
    if (t >= 0) {
      year = 1970;
      if (days > 365) {
        int64_t n = (days - 366) / cycle;
        days -= n * cycle;
        year += 400 * n;
      }
      while (days > 365) days -= year_length(year++);
      month = 1;
      int64_t length = 31;
      while (days >= length) {
        days -= length;
        if (++month > 12) month = 1, ++year;
        length = month_length(month, year);
      }
      day = days + 1;
    } else {
      year = 1969;
      if (days < -365) {
        int64_t n = (-366 - days) / cycle;
        days += n * cycle;
        year -= 400 * n;
      }
      while (days < -365) days += year_length(year--);
      month = 12;
      int64_t length = 31;
      while (days <= -length) {
        days += length;
        if (--month < 1) month = 12, --year;
        length = month_length(month, year);
      }
      day = length + days + 1;
      if (day > length) {
        day = 1;
        if (++month > 12) month = 1, ++year;
      }
    }
    if (year < INT32_MIN || year > INT32_MAX) return "out of range";

    static const char* const weekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                           "Thursday", "Friday", "Saturday"};
    static const char* const months[] = {"",        "January",  "February", "March",  "April",
                                         "May",     "June",     "July",     "August", "September",
                                         "October", "November", "December"};
    int y = static_cast<int>(year), mo = static_cast<int>(month), dd = static_cast<int>(day);
    int hh = static_cast<int>(hour), mi = static_cast<int>(minute), ss = static_cast<int>(second);
    int wd = static_cast<int>(weekday);
    int dial = hh <= 12 ? hh : hh - 12;

    std::string text;
    char buf[40];
    bool directive = false;
    for (char c : pattern) {
      if (!directive) {
        if (c == '%')
          directive = true;
        else
          text += c;
        continue;
      }
      // After "%%" nothing is remembered, so a following "%" opens a new directive;
      // after any other directive byte, that byte is remembered and is not a "%".
      directive = false;
      buf[0] = '\0';
      switch (c) {
        case '%': text += '%'; break;
        case 'A': text += weekdays[wd]; break;
        case 'a': text.append(weekdays[wd], 3); break;
        case 'B': text += months[mo]; break;
        case 'b': text.append(months[mo], 3); break;
        case 'Y': std::snprintf(buf, sizeof buf, "%d", y); break;
        case 'y': std::snprintf(buf, sizeof buf, "%02d", y % 100); break;
        case 'm': std::snprintf(buf, sizeof buf, "%02d", mo); break;
        case 'd': std::snprintf(buf, sizeof buf, "%02d", dd); break;
        case 'H': std::snprintf(buf, sizeof buf, "%02d", hh); break;
        case 'I': std::snprintf(buf, sizeof buf, "%02d", dial); break;
        case 'M': std::snprintf(buf, sizeof buf, "%02d", mi); break;
        case 'S': std::snprintf(buf, sizeof buf, "%02d", ss); break;
        case 'p': text += hh < 12 ? "AM" : "PM"; break;
        case 'w': std::snprintf(buf, sizeof buf, "%d", wd); break;
        case 'x': std::snprintf(buf, sizeof buf, "%04d/%02d/%02d", y, mo, dd); break;
        case 'X': std::snprintf(buf, sizeof buf, "%02d:%02d:%02d", hh, mi, ss); break;
        default: break;
      }
      text += buf;
    }
    return text;
  }

 private:
  static bool leap(int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  }
  static int64_t year_length(int64_t year) { return leap(year) ? 366 : 365; }
  static int64_t month_length(int64_t month, int64_t year) {
    static const int64_t lengths[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && leap(year) ? 29 : lengths[month];
  }
};
