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
    fields f;
    // Beyond 1e17 s the year surely exceeds 32 bits; below it the day count is exact.
    if (!(std::fabs(t) < 1e17) || !split(t, f)) return "out of range";

    std::string text;
    bool after_percent = false;
    for (char c : pattern) {
      if (!after_percent) {
        if (c == '%') after_percent = true;
        else text += c;
        continue;
      }
      // After "%%" nothing is remembered, so a following "%" opens a new directive;
      // after any other directive byte, that byte is remembered and is not a "%".
      after_percent = false;
      for (const auto& d : directives())
        if (d.letter == c) d.write(f, text);
    }
    return text;
  }

 private:
  struct fields {
    int year, month, day, hour, minute, second, weekday;  // month 1 to 12, weekday 0 (Sunday) to 6
  };

  // The fields of time t; false when its year does not fit an int32_t.
  static bool split(double t, fields& f) {
    double m = std::floor(t / 60), h = std::floor(m / 60), d = std::floor(h / 24);
    if (t >= 0) {
      f.second = static_cast<int>(std::fmod(t, 60));
      f.minute = static_cast<int>(std::fmod(m, 60));
      f.hour = static_cast<int>(std::fmod(h, 24));
      f.weekday = static_cast<int>(std::fmod(d + 4, 7));
    } else {
      f.second = static_cast<int>(static_cast<int64_t>(std::fmod(t, 60) + 60) % 60);
      f.minute = static_cast<int>(static_cast<int64_t>(std::fmod(m, 60) + 60) % 60);
      f.hour = static_cast<int>(static_cast<int64_t>(std::fmod(h, 24) + 24) % 24);
      f.weekday = static_cast<int>(static_cast<int64_t>(std::fmod(d - 3, 7) + 7) % 7);
    }
    int64_t year, month, day;
    if (t >= 0) date_after_epoch(static_cast<int64_t>(d), year, month, day);
    else date_before_epoch(static_cast<int64_t>(d), year, month, day);
    if (year < INT32_MIN || year > INT32_MAX) return false;
    f.year = static_cast<int>(year);
    f.month = static_cast<int>(month);
    f.day = static_cast<int>(day);
    return true;
  }

  // Every 400 Gregorian years hold 146097 days, so whole cycles are skipped while
  // the year-by-year walk would certainly still go on: the fields stay the same.
  static constexpr int64_t cycle = 146097;

  // The date `days` (0 or more) days after 1970-01-01.
  static void date_after_epoch(int64_t days, int64_t& year, int64_t& month, int64_t& day) {
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
  }

  // The date of day number `days` (below 0) counted from 1970-01-01, walking back
  // from the end of 1969.
  static void date_before_epoch(int64_t days, int64_t& year, int64_t& month, int64_t& day) {
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

  static bool leap(int64_t year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }
  static int64_t year_length(int64_t year) { return leap(year) ? 366 : 365; }
  static int64_t month_length(int64_t month, int64_t year) {
    static const int64_t lengths[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && leap(year) ? 29 : lengths[month];
  }

  static void append(std::string& text, const char* format, int a, int b = 0, int c = 0) {
    char buf[40];
    std::snprintf(buf, sizeof buf, format, a, b, c);
    text += buf;
  }
  static const char* weekday_name(const fields& f) {
    static const char* const names[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
    return names[f.weekday];
  }
  static const char* month_name(const fields& f) {
    static const char* const names[] = {"",     "January", "February",  "March",   "April",    "May",     "June",
                                        "July", "August",  "September", "October", "November", "December"};
    return names[f.month];
  }

  // What each directive letter writes; a letter not listed writes nothing.
  struct directive {
    char letter;
    void (*write)(const fields& f, std::string& text);
  };
  static const directive (&directives())[17] {
    static const directive table[17] = {
        {'%', [](const fields&, std::string& t) { t += '%'; }},
        {'A', [](const fields& f, std::string& t) { t += weekday_name(f); }},
        {'a', [](const fields& f, std::string& t) { t.append(weekday_name(f), 3); }},
        {'B', [](const fields& f, std::string& t) { t += month_name(f); }},
        {'b', [](const fields& f, std::string& t) { t.append(month_name(f), 3); }},
        {'Y', [](const fields& f, std::string& t) { append(t, "%d", f.year); }},
        {'y', [](const fields& f, std::string& t) { append(t, "%02d", f.year % 100); }},
        {'m', [](const fields& f, std::string& t) { append(t, "%02d", f.month); }},
        {'d', [](const fields& f, std::string& t) { append(t, "%02d", f.day); }},
        {'H', [](const fields& f, std::string& t) { append(t, "%02d", f.hour); }},
        {'I', [](const fields& f, std::string& t) { append(t, "%02d", f.hour <= 12 ? f.hour : f.hour - 12); }},
        {'M', [](const fields& f, std::string& t) { append(t, "%02d", f.minute); }},
        {'S', [](const fields& f, std::string& t) { append(t, "%02d", f.second); }},
        {'p', [](const fields& f, std::string& t) { t += f.hour < 12 ? "AM" : "PM"; }},
        {'w', [](const fields& f, std::string& t) { append(t, "%d", f.weekday); }},
        {'x', [](const fields& f, std::string& t) { append(t, "%04d/%02d/%02d", f.year, f.month, f.day); }},
        {'X', [](const fields& f, std::string& t) { append(t, "%02d:%02d:%02d", f.hour, f.minute, f.second); }},
    };
    return table;
  }
};
