// Arbitrary bytes as a formula file: the first line is the argument text, the
// rest the file. Prompts without an argument read the end of input.
#include "session/formula.hpp"

#include <unistd.h>

#include <cstdint>

#include "quiet.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  quiet();
  static vexa::parser parser;
  static std::string file = "/tmp/vexa-fuzz-" + std::to_string(getpid()) + ".frm";
  std::string input(reinterpret_cast<const char*>(data), size);
  size_t cut = input.find('\n');
  std::string args = input.substr(0, cut);
  std::string body = cut == std::string::npos ? std::string() : input.substr(cut + 1);
  std::FILE* f = std::fopen(file.c_str(), "wb");
  if (!f) return 0;
  std::fwrite(body.data(), 1, body.size(), f);
  std::fclose(f);
  run_formula(file, args, parser);
  std::remove(file.c_str());
  return 0;
}
