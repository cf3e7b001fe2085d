// The operands the parser builds and the evaluator reduces.
#pragma once

#include <cstdint>
#include <vector>

namespace vexa {

// One operand and the operator written after it (0 when none follows). An
// identifier not yet resolved is a piece of the line's text, not a copy: an
// operand costs 16 bytes, so a long line needs little more memory than itself.
struct valop {
  union {
    double value;      // when name_size is 0
    uint64_t name_at;  // otherwise: where the name starts in the line
  };
  uint32_t name_size;  // UINT32_MAX: at least that long, measured again on use
  char op;

  static valop number(double v) {
    valop o;
    o.value = v;
    o.name_size = 0;
    o.op = 0;
    return o;
  }
  bool is_name() const { return name_size != 0; }
};

// The operands of a line: those of every open group, the innermost last.
using expression = std::vector<valop>;

}  // namespace vexa
