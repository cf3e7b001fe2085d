#include "base/text.hpp"

#include <cmath>
#include <cstdio>

namespace base {

std::string trim(const std::string& text) {
  std::string::size_type first = text.find_first_not_of(blanks);
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string num(int n) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%d", n);
  return buf;
}

// Whole values print in full digits, however large; the largest double needs 309
// digits and a sign, so 512 bytes always suffice.
std::string num(double x) {
  double whole;
  char buf[512];
  if (std::modf(x, &whole) == 0.0)
    std::snprintf(buf, sizeof buf, "%.0f", x);
  else
    std::snprintf(buf, sizeof buf, "%g", x);
  return buf;
}

std::string comma(const std::string& number) {
  std::string text = trim(number);
  std::string::size_type point = text.rfind('.');
  std::string integer = text.substr(0, point);
  std::string tail = point == std::string::npos ? std::string() : text.substr(point);
  std::string grouped;
  grouped.reserve(integer.size() + integer.size() / 3 + tail.size());
  for (std::string::size_type i = 0; i < integer.size(); ++i) {
    if (i > 0 && (integer.size() - i) % 3 == 0) grouped += ',';
    grouped += integer[i];
  }
  return grouped + tail;
}

std::string hex(const std::string& bytes) {
  std::string text(bytes.size() * 2, '0');
  for (std::string::size_type i = 0; i < bytes.size(); ++i) {
    unsigned char c = static_cast<unsigned char>(bytes[i]);
    text[2 * i] = hex_digits[c >> 4];
    text[2 * i + 1] = hex_digits[c & 15];
  }
  return text;
}

}  // namespace base
