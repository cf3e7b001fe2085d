// How vexa picks the code that runs for an algorithm on this CPU. Each algorithm
// with code for more than one instruction set has one chooser: a table of its
// implementations in order of preference, each named ("avx512", "avx2",
// "sha-ni", "armv8", "neon", "portable") with the CPU feature it needs. The
// first this CPU supports is taken at first use; the portable one, last, needs
// nothing. Tests, fuzz targets and benchmarks walk the table and use() each.
#pragma once

#include <cstddef>
#include <cstring>

#include "base/cpu.hpp"

namespace base {

template <class Function>
struct implementation {
  const char* name;
  Function function;
  bool cpu::features::*needs;  // null for the portable code

  bool supported() const { return !needs || cpu::detected().*needs; }
};

template <class Function>
class chooser {
 public:
  template <std::size_t N>
  constexpr explicit chooser(const implementation<Function> (&table)[N]) : first_(table), last_(table + N) {}

  // The implementation in use: this CPU's preferred one, unless use() said otherwise.
  const implementation<Function>& chosen() {
    if (!chosen_) chosen_ = preferred();
    return *chosen_;
  }
  Function get() { return chosen().function; }

  const implementation<Function>* begin() const { return first_; }
  const implementation<Function>* end() const { return last_; }

  // Uses the implementation called `name` from now on, or the preferred one
  // again for null; false, with nothing changed, where this CPU cannot run it.
  bool use(const char* name) {
    if (!name) {
      chosen_ = preferred();
      return true;
    }
    for (const implementation<Function>* i = first_; i != last_; ++i)
      if (std::strcmp(i->name, name) == 0 && i->supported()) {
        chosen_ = i;
        return true;
      }
    return false;
  }

 private:
  const implementation<Function>* preferred() const {
    const implementation<Function>* i = first_;
    while (!i->supported()) ++i;
    return i;
  }

  const implementation<Function>* first_;
  const implementation<Function>* last_;
  const implementation<Function>* chosen_ = nullptr;
};

}  // namespace base
