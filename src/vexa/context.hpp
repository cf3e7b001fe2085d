// The engine's name table: variables and one-argument functions by name.
#pragma once

#include <cmath>
#include <ctime>
#include <map>
#include <memory>
#include <string>

#include "vexa/precision.hpp"

namespace vexa {

struct identifier {
  double value = 0.0;
  double (*function)(double) = nullptr;  // non-null for a function, which has no value
};

struct context : std::map<std::string, identifier*> {
  context() { reset(); }
  context(const context&) = delete;
  context& operator=(const context&) = delete;
  virtual ~context() { release(); }

  // The new names are made in full before the old ones go: running out of memory
  // here leaves the table as it was, and the evaluator needs "ans" and "time".
  void reset() {
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
        {"sin", 0.0, from_c_library<std::sin>},
        {"cos", 0.0, from_c_library<std::cos>},
        {"tan", 0.0, from_c_library<std::tan>},
        {"asin", 0.0, from_c_library<std::asin>},
        {"acos", 0.0, from_c_library<std::acos>},
        {"atan", 0.0, from_c_library<std::atan>},
        {"abs", 0.0, std::fabs},
        {"ln", 0.0, from_c_library<std::log>},
        {"log", 0.0, from_c_library<std::log10>},
        {"sqrt", 0.0, std::sqrt},
        {"exp", 0.0, from_c_library<std::exp>},
    };
    struct owning_map : std::map<std::string, identifier*> {
      ~owning_map() {
        for (auto& entry : *this) delete entry.second;
      }
    };
    // On the heap: GCC 12 takes a swap with a local map for a dangling pointer.
    std::unique_ptr<owning_map> fresh(new owning_map);
    for (const auto& b : builtins) {
      std::unique_ptr<identifier> made(new identifier{b.value, b.function});
      fresh->emplace(b.name, made.get());
      made.release();
    }
    release();
    swap(*fresh);
  }

 private:
  void release() {
    for (auto& entry : *this) delete entry.second;
    clear();
  }
};

// Binding always installs a new variable, so a name that held a function loses it.
inline void bind_variable(context& ctx, const std::string& name, double value) {
  std::unique_ptr<identifier> fresh(new identifier{value, nullptr});
  identifier*& slot = ctx[name];
  delete slot;
  slot = fresh.release();
}

}  // namespace vexa
