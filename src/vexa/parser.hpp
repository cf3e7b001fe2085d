// The parser and the five-pass evaluator.
//
// Grammar, enforced by the automaton of tables.hpp rather than by recursion:
//   line     = operand { operator operand }
//   operand  = number | name | name "(" line ")" | "(" line ")"
//   operator = "!" | "^" | "*" | "/" | "%" | "+" | "-" | "="   ("=" only after a name)
//   number   = [ "-" ] ( digits [ "." digits ] | "." digits )
// A group is evaluated as soon as its ")" is read and enters its parent as one number,
// so the evaluator only ever sees a flat list.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <string>
#include <vector>

#include "vexa/arithmetic.hpp"
#include "vexa/context.hpp"
#include "vexa/expression.hpp"
#include "vexa/tables.hpp"

namespace vexa {

// The message of a line that ran out of memory: not an error of the line itself,
// so whoever evaluates on the user's behalf must pass it on.
constexpr char out_of_memory[] = "Out of memory";

struct parser {
  context ctx;
  std::string error;
  bool debug = false;

  // Evaluates one line; false with the message in `error`, `value` untouched.
  bool parse(const std::string& text, double& value);

 private:
  const std::string* scanned = nullptr;  // the line being parsed, which names point into

  // What a scan has built so far: the operands of every open group, the innermost
  // last; where each group's operands begin, the line's own first; and where the
  // number or name being read began.
  struct partial_line {
    expression operands;
    std::vector<std::size_t> groups;
    std::size_t number_start = 0, name_start = 0;
  };

  bool scan(const std::string& line, double& value);
  bool take_step(partial_line& p, int state, int next, std::size_t i, unsigned char c);
  bool close_group(partial_line& p, std::size_t i);
  bool fail_at(const char* format, std::size_t i, unsigned char c);
  bool evaluate(valop* first, std::size_t& count, double& value);
  std::string name_of(const valop& v) const;
  bool resolve(valop& v, double& result, const char* follow_on_line);
  template <class Combine>
  bool left_to_right(valop* a, std::size_t& count, const char* ops, Combine combine);
  template <class Apply>
  bool right_to_left(valop* a, std::size_t& count, char op, Apply apply);

  // Fails with `message`; a follow-on line is kept only when debugging or when
  // nothing else has been said.
  bool fail(const std::string& message) {
    error = message;
    return false;
  }
  bool follow_on(const char* line) {
    if (error.empty() || debug) error += line;
    return false;
  }
};

inline bool is_name_byte(char c) {
  int k = class_table()[static_cast<unsigned char>(c)];
  return k == digit || k == letter;
}

inline std::string parser::name_of(const valop& v) const {
  if (!v.is_name()) return std::string();
  std::size_t size = v.name_size;
  while (size >= UINT32_MAX && v.name_at + size < scanned->size() && is_name_byte((*scanned)[v.name_at + size])) ++size;
  return scanned->substr(v.name_at, size);
}

// The operand's number: its own, or its variable's, which it keeps from then on.
inline bool parser::resolve(valop& v, double& result, const char* follow_on_line) {
  if (v.is_name()) {
    std::string name = name_of(v);
    context::iterator found = ctx.find(name);
    if (found == ctx.end()) return fail("Unknown identifier: " + name) || follow_on(follow_on_line);
    if (found->second->function)
      return fail("Identifier cannot be used as a value: " + name) || follow_on(follow_on_line);
    char op = v.op;
    v = valop::number(found->second->value);
    v.op = op;
  }
  result = v.value;
  return true;
}

// One pass for a left-associative level, compacting the operands in place: each
// operator found is applied at once and its result's own operator examined next.
template <class Combine>
bool parser::left_to_right(valop* a, std::size_t& count, const char* ops, Combine combine) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < count;) {
    valop v = a[i++];
    while (v.op != 0 && std::strchr(ops, v.op)) {
      double lhs, rhs;
      if (!resolve(v, lhs, "\nUnable to resolve left-hand value.")) return false;
      if (i == count) return fail(std::string("No right-hand value for operator: ") + v.op + ".");
      if (!resolve(a[i], rhs, "\nUnable to resolve right-hand value.")) return false;
      v = valop::number(combine(v.op, lhs, rhs));
      v.op = a[i++].op;
    }
    a[kept++] = v;
  }
  count = kept;
  return true;
}

// One pass for a right-associative level ("2^3^2" is 2^9, "a = b = 2" binds b
// first), compacting from the right. apply(left operand, its value, right-hand
// value, right operand) leaves the result in the right operand; only `^` reads
// its left operand's value ("=" binds its name).
template <class Apply>
bool parser::right_to_left(valop* a, std::size_t& count, char op, Apply apply) {
  std::size_t kept = count;  // a[kept..count) are the operands that stay
  for (std::size_t i = count; i > 0;) {
    valop v = a[--i];
    if (v.op != op) {
      a[--kept] = v;
      continue;
    }
    double lhs = 0, rhs;
    if (op == '^' && !resolve(v, lhs, "\nUnable to resolve left-hand value.")) return false;
    if (kept == count) return fail(std::string("No right-hand value for operator: ") + op + ".");
    if (!resolve(a[kept], rhs, "\nUnable to resolve right-hand value.")) return false;
    apply(v, lhs, rhs, a[kept]);
  }
  std::memmove(a, a + kept, (count - kept) * sizeof(valop));
  count -= kept;
  return true;
}

inline bool parser::evaluate(valop* a, std::size_t& count, double& value) {
  if (debug) {
    for (std::size_t i = 0; i < count; ++i)
      std::printf("%s(%f,'%s',%c)", i == 0 ? "" : "->", a[i].is_name() ? 0.0 : a[i].value,
                  name_of(a[i]).c_str(), a[i].op);
    std::printf("\n");
  }
  ctx.find("time")->second->value = static_cast<double>(std::time(nullptr));

  bool passed =
      left_to_right(a, count, "!", [](char, double x, double y) { return falling_product(x, y); }) &&
      right_to_left(a, count, '^', [](valop&, double x, double y, valop& result) {
        char op = result.op;
        result = valop::number(power(x, y));
        result.op = op;
      }) &&
      left_to_right(a, count, "*/%", [](char op, double x, double y) {
        return op == '*' ? x * y : op == '/' ? x / y : remainder_32(x, y);
      }) &&
      left_to_right(a, count, "+-", [](char op, double x, double y) { return op == '+' ? x + y : x - y; }) &&
      right_to_left(a, count, '=', [&](valop& target, double, double v, valop&) {
        bind_variable(ctx, name_of(target), v);
      });
  if (!passed) return false;

  if (count != 1) return fail("Expression does not evaluate to a single value.");
  double result;
  if (!resolve(a[0], result, "\nUnable to resolve value.")) return false;
  ctx.find("ans")->second->value = result;
  value = result;
  return true;
}

inline bool parser::parse(const std::string& text, double& value) {
  // Memory is the one thing that may run out on a long line: that fails the line
  // like any other error, and the session goes on.
  try {
    return scan(text, value);
  } catch (const std::bad_alloc&) {
    return fail(out_of_memory);
  }
}

// Runs the automaton over the line, the end read as one trailing blank that ends
// any open token, and evaluates what is left at the end.
inline bool parser::scan(const std::string& line, double& value) {
  int** next_state = state_table();
  int* classes = class_table();
  scanned = &line;
  error.clear();
  // An operand takes at least one byte and the operator after it another, so
  // one allocation holds them all; pages it never touches cost nothing.
  partial_line p;
  p.operands.reserve(line.size() / 2 + 2);
  p.groups.reserve(static_cast<std::size_t>(std::count(line.begin(), line.end(), '(')) + 1);
  p.groups.push_back(0);

  int state = start;
  for (std::size_t i = 0; i <= line.size(); ++i) {
    unsigned char c = i < line.size() ? static_cast<unsigned char>(line[i]) : ' ';
    int k = classes[c];
    if (k == illegal) return fail_at("Illegal character at position %d: '%c'\n", i, c);
    int next = next_state[state][k];
    if (debug) std::printf("[%d][%d](%c) = %d\n", state, k, c, next);
    if (next == reject) return fail_at("Unexpected character at position %d: '%c'\n", i, c);
    if (!take_step(p, state, next, i, c)) return false;
    state = next;
  }

  if (p.groups.size() != 1) return fail("Input does not evaluate to a single expression.");
  std::size_t count = p.operands.size();
  return evaluate(p.operands.data(), count, value);
}

// What the step from `state` to `next` on byte c at position i does to the
// operands: ends a number or a name, stores an operator, opens or closes a group.
inline bool parser::take_step(partial_line& p, int state, int next, std::size_t i, unsigned char c) {
  bool in_number = state >= sign && state <= fraction;
  if (next >= sign && next <= fraction) {
    if (!in_number) p.number_start = i;
    return true;
  }
  if (state == integer || state == fraction)
    p.operands.push_back(valop::number(number_value(scanned->c_str() + p.number_start, i - p.number_start)));
  if (next == in_name) {
    if (state != in_name) p.name_start = i;
  } else if (state == in_name) {
    valop name = valop::number(0);
    name.name_at = p.name_start;
    name.name_size = static_cast<uint32_t>(std::min<std::size_t>(i - p.name_start, UINT32_MAX));
    p.operands.push_back(name);
  }

  if ((next == after_operator && state != after_operator) || (next == after_assign && state != after_assign))
    p.operands.back().op = static_cast<char>(c);
  else if (next == after_open)
    p.groups.push_back(p.operands.size());
  else if (next == after_close)
    return close_group(p, i);
  return true;
}

// The ")" at position i: the innermost group is evaluated and enters its parent
// as one number, through the function whose name it directly follows, if any.
inline bool parser::close_group(partial_line& p, std::size_t i) {
  if (p.groups.size() == 1) return fail_at("Unmatched right-parenthesis at: %d\n", i, ')');
  std::size_t first = p.groups.back(), count = p.operands.size() - first;
  p.groups.pop_back();
  double v;
  if (!evaluate(p.operands.data() + first, count, v))
    return follow_on("\nFailed to evaluate parenthetical expression.");
  p.operands.resize(first);
  if (p.operands.size() > p.groups.back() && p.operands.back().op == 0 && p.operands.back().is_name()) {
    std::string function = name_of(p.operands.back());
    p.operands.pop_back();
    context::iterator found = ctx.find(function);
    if (found == ctx.end()) return fail("Unknown identifier: " + function);
    if (!found->second->function) return fail("Identifier is not a function: " + function);
    v = found->second->function(v);
  }
  p.operands.push_back(valop::number(v));
  return true;
}

// Positioned messages keep every byte, a NUL included, and their own line feed.
inline bool parser::fail_at(const char* format, std::size_t i, unsigned char c) {
  char buf[80];
  int n = std::snprintf(buf, sizeof buf, format, static_cast<int>(i), c);
  return fail(std::string(buf, static_cast<std::size_t>(n)));
}

}  // namespace vexa
