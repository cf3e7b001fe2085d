#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "base/base64.hpp"
#include "base/url.hpp"
#include "vexa/parser.hpp"

namespace {

// One typed line: a group, a function call, an assignment.
void parse_short_line(benchmark::State& state) {
  vexa::parser parser;
  const std::string line = "x = 2 * sin(pi / 4) + 1";
  double value = 0;
  for (auto _ : state) {
    if (!parser.parse(line, value)) state.SkipWithError(parser.error.c_str());
    benchmark::DoNotOptimize(value);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(parse_short_line);

// One flat line of 10,000 operands, every operator level but '=' present; each
// block of ten operands is worth 7.
void parse_long_line(benchmark::State& state) {
  const int blocks = 1000;
  std::string line;
  for (int i = 0; i < blocks; ++i) line += i ? "+1+2*3-8/4+7%4+2^2-5" : "1+2*3-8/4+7%4+2^2-5";
  vexa::parser parser;
  double value = 0;
  for (auto _ : state) {
    if (!parser.parse(line, value) || value != 7.0 * blocks)
      state.SkipWithError("wrong value for the long line");
    benchmark::DoNotOptimize(value);
  }
  state.SetItemsProcessed(state.iterations() * blocks * 10);
}
BENCHMARK(parse_long_line)->Unit(benchmark::kMicrosecond);

constexpr std::size_t buffer_size = 1 << 20;

// Bytes of every value, from a fixed linear congruential sequence.
std::string random_bytes(std::size_t n) {
  std::string s(n, '\0');
  uint32_t x = 12345;
  for (char& c : s) {
    x = x * 1103515245u + 12345u;
    c = static_cast<char>(x >> 24);
  }
  return s;
}

// Printable text with blanks, '%' and line feeds, so that about one byte in
// thirteen needs an escape; no zero bytes.
std::string text_bytes(std::size_t n) {
  static const char letters[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuv% ,.  0123456789";
  static_assert(sizeof letters == 65, "64 characters");
  std::string s(n, '\0');
  uint32_t x = 54321;
  for (std::size_t i = 0; i < n; ++i) {
    x = x * 1103515245u + 12345u;
    s[i] = i % 77 == 76 ? '\n' : letters[(x >> 24) & 63];
  }
  return s;
}

// Throughput in bytes of input per second.
void coding(benchmark::State& state, std::string (*code)(const std::string&), const std::string& input) {
  for (auto _ : state) {
    std::string out = code(input);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * input.size()));
}

std::string encode_url(const std::string& s) { return base::url_encode(s, false); }
std::string decode_url(const std::string& s) { return base::url_decode(s, false); }

// Registers the coding `name` under every implementation of `algorithm` this
// CPU supports, as "base64_encode/avx2" and so on.
template <class Function>
void each_implementation(const char* name, base::chooser<Function>& algorithm,
                         std::string (*code)(const std::string&), const std::string& input) {
  for (const base::implementation<Function>& i : algorithm)
    if (i.supported()) {
      auto run = [&algorithm, i, code, input](benchmark::State& state) {
        algorithm.use(i.name);
        coding(state, code, input);
        algorithm.use(nullptr);
      };
      benchmark::RegisterBenchmark((std::string(name) + "/" + i.name).c_str(), run)->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string bytes = random_bytes(buffer_size), text = text_bytes(buffer_size);
  each_implementation("base64_encode", base::base64_encode_implementations(), base::base64, bytes);
  each_implementation("base64_decode", base::unbase64_implementations(), base::unbase64, base::base64(bytes));
  each_implementation("url_encode", base::url_encode_implementations(), encode_url, text);
  each_implementation("url_decode", base::url_decode_implementations(), decode_url, encode_url(text));
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
