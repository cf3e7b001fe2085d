// The engine's data: operands, flat expressions, and the name table.
#pragma once

#include <cmath>
#include <ctime>
#include <list>
#include <map>
#include <string>

namespace vexa {

struct context;

// One operand and the operator written after it (0 when none follows).
struct valop {
  double value = 0.0;
  std::string name;  // non-empty only while the operand is an unresolved identifier
  char op = 0;

  bool resolve(double& value, context& ctx, std::string& error);
};

// A flat operand list; groups are evaluated before they enter it, so it never nests.
struct expression : std::list<valop*> {
  expression() = default;
  expression(const expression&) = delete;
  expression& operator=(const expression&) = delete;
  virtual ~expression() {
    for (valop* v : *this) delete v;
  }
};

struct identifier {
  double value = 0.0;
  double (*function)(double) = nullptr;  // non-null for a function, which has no value
};

struct context : std::map<std::string, identifier*> {
  context() { reset(); }
  context(const context&) = delete;
  context& operator=(const context&) = delete;
  virtual ~context() { release(); }

  void reset() {
    release();
    using fn = double (*)(double);
    const struct {
      const char* name;
      double value;
      fn function;
    } builtins[] = {
        {"ans", 0.0, nullptr},
        {"e", 2.7182818284, nullptr},
        {"pi", 3.1415926535, nullptr},
        {"time", static_cast<double>(std::time(nullptr)), nullptr},
        {"sin", 0.0, std::sin},
        {"cos", 0.0, std::cos},
        {"tan", 0.0, std::tan},
        {"asin", 0.0, std::asin},
        {"acos", 0.0, std::acos},
        {"atan", 0.0, std::atan},
        {"abs", 0.0, std::fabs},
        {"ln", 0.0, std::log},
        {"log", 0.0, std::log10},
        {"sqrt", 0.0, std::sqrt},
        {"exp", 0.0, std::exp},
    };
    for (const auto& b : builtins) (*this)[b.name] = new identifier{b.value, b.function};
  }

 private:
  void release() {
    for (auto& entry : *this) delete entry.second;
    clear();
  }
};

// Binding always installs a new variable, so a name that held a function loses it.
inline void bind_variable(context& ctx, const std::string& name, double value) {
  identifier* fresh = new identifier{value, nullptr};
  identifier*& slot = ctx[name];
  delete slot;
  slot = fresh;
}

inline bool valop::resolve(double& result, context& ctx, std::string& error) {
  if (name.empty()) {
    result = value;
    return true;
  }
  context::iterator found = ctx.find(name);
  if (found == ctx.end()) {
    error = "Unknown identifier: " + name;
    return false;
  }
  if (found->second->function) {
    error = "Identifier cannot be used as a value: " + name;
    return false;
  }
  result = value = found->second->value;
  name.clear();
  return true;
}

}  // namespace vexa
