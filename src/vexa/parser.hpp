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

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <list>
#include <string>

#include "vexa/context.hpp"
#include "vexa/tables.hpp"

namespace vexa {

// Truncates toward zero into 32 bits; out-of-range values clamp and NaN gives 0.
inline int to_int32(double x) {
  if (x != x) return 0;
  if (x >= 2147483647.0) return INT_MAX;
  if (x <= -2147483648.0) return INT_MIN;
  return static_cast<int>(x);
}

struct parser {
  context ctx;
  std::string error;
  bool debug = false;

  bool parse(const std::string& text, double& value);
  bool evaluate(expression* expr, double& value);
  bool resolve_parts(std::list<valop*>::iterator& it, expression* expr, char op, double& lhs,
                     double& rhs);

 private:
  // A follow-on line explains which step failed; it is kept only when debugging
  // or when nothing else has been said.
  void follow_on(const char* line) {
    if (error.empty() || debug) error += line;
  }
  template <class Combine>
  bool left_to_right(expression* expr, const char* ops, Combine combine);
};

inline bool parser::resolve_parts(std::list<valop*>::iterator& it, expression* expr, char op,
                                  double& lhs, double& rhs) {
  if (!(*it)->resolve(lhs, ctx, error)) {
    follow_on("\nUnable to resolve left-hand value.");
    delete expr;
    return false;
  }
  delete *it;
  it = expr->erase(it);
  if (it == expr->end()) {
    error = std::string("No right-hand value for operator: ") + op + ".";
    delete expr;
    return false;
  }
  if (!(*it)->resolve(rhs, ctx, error)) {
    follow_on("\nUnable to resolve right-hand value.");
    delete expr;
    return false;
  }
  return true;
}

// One pass for a left-associative level: each operator found is applied at once
// and the scan stays on the result, whose own operator is examined next.
template <class Combine>
bool parser::left_to_right(expression* expr, const char* ops, Combine combine) {
  for (std::list<valop*>::iterator it = expr->begin(); it != expr->end();) {
    char op = (*it)->op;
    if (op == 0 || !std::strchr(ops, op)) {
      ++it;
      continue;
    }
    double lhs, rhs;
    if (!resolve_parts(it, expr, op, lhs, rhs)) return false;
    (*it)->value = combine(op, lhs, rhs);
  }
  return true;
}

// Once a product is 0 or infinite, each further factor can only flip its sign (a
// negative one) or make it NaN (0 times infinity), so the rest need not be walked.
inline double settle_product(double r, double from, double b) {
  double lowest = b < -2147483648.0 ? -2147483648.0 : std::floor(b) + 1;
  if (std::isinf(r) && from >= 0 && lowest <= 0) {
    // The NaN of the multiplication itself, whose sign the platform chooses (x86
    // sets it); later factors pass a NaN on unchanged.
    volatile double zero = 0.0;
    return r * zero;
  }
  double highest_negative = from < -1 ? from : -1;
  double negatives = highest_negative >= lowest ? highest_negative - lowest + 1 : 0;
  return std::fmod(negatives, 2) == 1 ? -r : r;
}

// a!b: a times every integer from a-1 down to just above b. The counter is 32-bit;
// it stops at the bottom of its range, so a right operand below -2147483648 acts
// as -2147483649.
inline double falling_product(double a, double b) {
  double r = a;
  for (int k = to_int32(a - 1); k > b; --k) {
    r *= k;
    if (k == INT_MIN || r != r) break;
    if (r == 0 || std::isinf(r)) return settle_product(r, k - 1.0, b);
  }
  return r;
}

inline bool parser::evaluate(expression* expr, double& value) {
  if (debug) {
    for (std::list<valop*>::iterator it = expr->begin(); it != expr->end(); ++it)
      std::printf("%s(%f,'%s',%c)", it == expr->begin() ? "" : "->", (*it)->value,
                  (*it)->name.c_str(), (*it)->op);
    std::printf("\n");
  }
  ctx.find("time")->second->value = static_cast<double>(std::time(nullptr));

  if (!left_to_right(expr, "!", [](char, double a, double b) { return falling_product(a, b); }))
    return false;

  // '^' groups from the right: "2^3^2" is 2^9.
  for (std::list<valop*>::iterator it = expr->end(); it != expr->begin();) {
    --it;
    if ((*it)->op != '^') continue;
    double lhs, rhs;
    if (!resolve_parts(it, expr, '^', lhs, rhs)) return false;
    (*it)->value = std::pow(lhs, rhs);
  }

  if (!left_to_right(expr, "*/%", [](char op, double a, double b) {
        if (op == '*') return a * b;
        if (op == '/') return a / b;
        return a - b * to_int32(a / b);
      }))
    return false;

  if (!left_to_right(expr, "+-", [](char op, double a, double b) {
        return op == '+' ? a + b : a - b;
      }))
    return false;

  // '=' binds from the right, so "a = b = 2" binds b first.
  for (std::list<valop*>::iterator it = expr->end(); it != expr->begin();) {
    --it;
    if ((*it)->op != '=') continue;
    std::string target = (*it)->name;
    delete *it;
    it = expr->erase(it);
    if (it == expr->end()) {
      error = "No right-hand value for operator: =.";
      delete expr;
      return false;
    }
    double v;
    if (!(*it)->resolve(v, ctx, error)) {
      follow_on("\nUnable to resolve right-hand value.");
      delete expr;
      return false;
    }
    bind_variable(ctx, target, v);
  }

  if (expr->size() != 1) {
    error = "Expression does not evaluate to a single value.";
    delete expr;
    return false;
  }
  double result;
  if (!expr->front()->resolve(result, ctx, error)) {
    follow_on("\nUnable to resolve value.");
    delete expr;
    return false;
  }
  delete expr;
  ctx.find("ans")->second->value = result;
  value = result;
  return true;
}

inline bool parser::parse(const std::string& text, double& value) {
  int** next_state = state_table();
  int* classes = class_table();
  std::list<expression*> groups;  // a stack: bottom is the whole line, top the open group
  groups.push_back(new expression);
  std::string number, name;
  error.clear();

  auto fail = [&](const std::string& message) {
    error = message;
    for (expression* e : groups) delete e;
    return false;
  };
  // Positioned messages keep every byte, a NUL included, and their own line feed.
  auto positioned = [&](const char* format, size_t i, unsigned char c) {
    char buf[80];
    int n = std::snprintf(buf, sizeof buf, format, static_cast<int>(i), c);
    return fail(std::string(buf, static_cast<size_t>(n)));
  };

  int state = start;
  for (size_t i = 0; i <= text.size(); ++i) {
    // The end of the text reads as one trailing blank, which ends any open token.
    unsigned char c = i < text.size() ? static_cast<unsigned char>(text[i]) : ' ';
    int k = classes[c];
    if (k == illegal) return positioned("Illegal character at position %d: '%c'\n", i, c);
    int next = next_state[state][k];
    if (debug) std::printf("[%d][%d](%c) = %d\n", state, k, c, next);
    if (next == reject) return positioned("Unexpected character at position %d: '%c'\n", i, c);

    bool in_number = state >= sign && state <= fraction;
    if (next >= sign && next <= fraction) {
      if (in_number) number += static_cast<char>(c);
      else number.assign(1, static_cast<char>(c));
      state = next;
      continue;
    }
    expression* current = groups.back();
    if (state == integer || state == fraction)
      current->push_back(new valop{std::strtod(number.c_str(), nullptr), std::string(), 0});
    if (next == in_name) {
      if (state == in_name) name += static_cast<char>(c);
      else name.assign(1, static_cast<char>(c));
    } else if (state == in_name) {
      current->push_back(new valop{0.0, name, 0});
    }

    if ((next == after_operator && state != after_operator) ||
        (next == after_assign && state != after_assign)) {
      current->back()->op = static_cast<char>(c);
    } else if (next == after_open) {
      groups.push_back(new expression);
    } else if (next == after_close) {
      if (groups.size() == 1) return positioned("Unmatched right-parenthesis at: %d\n", i, c);
      expression* group = groups.back();
      groups.pop_back();
      double v;
      if (!evaluate(group, v)) {
        follow_on("\nFailed to evaluate parenthetical expression.");
        return fail(error);
      }
      expression* parent = groups.back();
      // A group right after a name that has no operator is a function's argument.
      if (!parent->empty() && parent->back()->op == 0 && !parent->back()->name.empty()) {
        std::string function = parent->back()->name;
        delete parent->back();
        parent->pop_back();
        context::iterator found = ctx.find(function);
        if (found == ctx.end()) return fail("Unknown identifier: " + function);
        if (!found->second->function) return fail("Identifier is not a function: " + function);
        v = found->second->function(v);
      }
      parent->push_back(new valop{v, std::string(), 0});
    }
    state = next;
  }

  if (groups.size() != 1) return fail("Input does not evaluate to a single expression.");
  return evaluate(groups.back(), value);
}

}  // namespace vexa
