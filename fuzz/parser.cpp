// Arbitrary bytes as one line, through a parser that lives across inputs so that
// variables carry over as in a session.
#include <cstdint>
#include <string>

#include "quiet.hpp"
#include "vexa/parser.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  quiet();
  static vexa::parser parser;
  double value;
  parser.parse(std::string(reinterpret_cast<const char*>(data), size), value);
  return 0;
}
