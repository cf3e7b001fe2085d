// A line cut at its first blank, as the session cuts its lines into a command and
// its arguments and a formula file its lines into a keyword and its operand.
#pragma once

#include <string>

struct cut_line {
  std::string word;  // the bytes before the first blank: all of a line without one
  std::string rest;  // the bytes after it, unchanged: further blanks stay
};

// Only byte 32 cuts: a tab belongs to the word.
inline cut_line cut_at_first_blank(const std::string& line) {
  std::size_t blank = line.find(' ');
  if (blank == std::string::npos) return {line, std::string()};
  return {line.substr(0, blank), line.substr(blank + 1)};
}
