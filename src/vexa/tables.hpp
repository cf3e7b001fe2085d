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
  static int rows[14][9] = {
      // digit point minus binop assign letter open close space
      {2, 3, 1, 15, 15, 8, 10, 15, 0},      // start
      {2, 3, 15, 15, 15, 15, 15, 15, 15},   // sign
      {2, 3, 6, 6, 15, 15, 15, 12, 5},      // integer
      {4, 15, 15, 15, 15, 15, 15, 15, 15},  // fraction_point
      {4, 15, 6, 6, 15, 15, 15, 12, 5},     // fraction
      {15, 15, 6, 6, 15, 15, 15, 12, 5},    // number_end
      {2, 3, 1, 15, 15, 8, 10, 15, 6},      // after_operator
      {2, 3, 1, 15, 15, 8, 10, 15, 7},      // after_assign
      {8, 15, 6, 6, 7, 8, 10, 12, 9},       // in_name
      {15, 15, 6, 6, 7, 15, 10, 12, 9},     // name_end
      {2, 3, 1, 15, 15, 8, 10, 15, 11},     // after_open
      {2, 3, 1, 15, 15, 8, 10, 15, 11},     // after_open_space
      {15, 15, 6, 6, 15, 15, 15, 12, 13},   // after_close
      {15, 15, 6, 6, 15, 15, 15, 12, 13},   // after_close_space
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
