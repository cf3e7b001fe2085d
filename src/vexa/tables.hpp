// The tokenizer's automaton: a class for every byte and a transition for every
// state and class. The tables alone decide which shapes of expression are legal.
#pragma once

namespace vexa {

// Character classes, indexed by the byte value taken as unsigned.
enum char_class { digit, point, minus, binop, assign, letter, open, close, space, illegal = 10 };

// States: what has just been read. 15 is only a table entry, never a current state.
enum scan_state {
  start, sign, integer, fraction_point, fraction, number_end, after_operator, after_assign,
  in_name, name_end, after_open, after_open_space, after_close, after_close_space, reject = 15
};

inline int* class_table() {
  static int buf[256];
  static int* t = nullptr;
  if (!t) {
    t = buf;
    for (int c = 255; c >= 0; --c) {
      int k = illegal;
      if (c >= '0' && c <= '9') k = digit;
      else if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_') k = letter;
      else if (c == '.') k = point;
      else if (c == '-') k = minus;
      else if (c == '!' || c == '%' || c == '*' || c == '+' || c == '/' || c == '^') k = binop;
      else if (c == '=') k = assign;
      else if (c == '(') k = open;
      else if (c == ')') k = close;
      else if (c == '\t' || c == '\n' || c == '\r' || c == ' ') k = space;
      buf[c] = k;
    }
  }
  return t;
}

// Row = current state (0 to 13), column = class (0 to 8), entry = next state.
inline int** state_table() {
  constexpr int R = reject;
  static int rows[14][9] = {
      // digit     point           minus           binop           assign        letter   open        close        space
      {integer,   fraction_point, sign,           R,              R,            in_name, after_open, R,           start},              // start
      {integer,   fraction_point, R,              R,              R,            R,       R,          R,           R},                  // sign
      {integer,   fraction_point, after_operator, after_operator, R,            R,       R,          after_close, number_end},         // integer
      {fraction,  R,              R,              R,              R,            R,       R,          R,           R},                  // fraction_point
      {fraction,  R,              after_operator, after_operator, R,            R,       R,          after_close, number_end},         // fraction
      {R,         R,              after_operator, after_operator, R,            R,       R,          after_close, number_end},         // number_end
      {integer,   fraction_point, sign,           R,              R,            in_name, after_open, R,           after_operator},     // after_operator
      {integer,   fraction_point, sign,           R,              R,            in_name, after_open, R,           after_assign},       // after_assign
      {in_name,   R,              after_operator, after_operator, after_assign, in_name, after_open, after_close, name_end},           // in_name
      {R,         R,              after_operator, after_operator, after_assign, R,       after_open, after_close, name_end},           // name_end
      {integer,   fraction_point, sign,           R,              R,            in_name, after_open, R,           after_open_space},   // after_open
      {integer,   fraction_point, sign,           R,              R,            in_name, after_open, R,           after_open_space},   // after_open_space
      {R,         R,              after_operator, after_operator, R,            R,       R,          after_close, after_close_space},  // after_close
      {R,         R,              after_operator, after_operator, R,            R,       R,          after_close, after_close_space},  // after_close_space
  };
  static int* buf[14];
  static int** t = nullptr;
  if (!t) {
    t = buf;
    for (int i = 0; i < 14; ++i) buf[i] = rows[i];
  }
  return t;
}

}  // namespace vexa
