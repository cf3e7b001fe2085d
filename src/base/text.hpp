// Number text, digit grouping, trimming, and the hexadecimal text of bytes.
#pragma once

#include <string>

namespace base {

// Blanks, tabs and line ends: what trimming removes everywhere in vexa.
inline const char* const blanks = " \t\r\n";

// The text without blanks at either end.
std::string trim(const std::string& text);

// An int in decimal; a double in full digits when it is whole, however large,
// else as printf's %g.
std::string num(int n);
std::string num(double x);

// A comma after every third character of the integer part, from the right. Nothing
// is checked, so a sign or letters count as positions too: "-123" gives "-,123".
std::string comma(const std::string& number);

// The hexadecimal digits, lowercase, then uppercase from hex_digits + 16.
inline const char hex_digits[] = "0123456789abcdef0123456789ABCDEF";

// Two lowercase hex digits a byte.
std::string hex(const std::string& bytes);

}  // namespace base
