#include <benchmark/benchmark.h>

#include <string>

#include "base/cpu.hpp"
#include "base/digest.hpp"
#include "base/random.hpp"
#include "base/text.hpp"

namespace {

// The step of the hash-chain benchmark: a 64-character string to the hex text of
// its SHA-256 digest, which is the next string. Argument 1 allows the CPU's SHA
// extensions where present, 0 forces the portable rounds.
void chain_step(benchmark::State& state) {
  base::cpu::portable_only = state.range(0) == 0;
  std::string s = base::randstr(64);
  for (auto _ : state) {
    s = base::hex(base::sha256(s));
    benchmark::DoNotOptimize(s.data());
  }
  state.SetItemsProcessed(state.iterations());
  base::cpu::portable_only = false;
}
BENCHMARK(chain_step)->Arg(1)->Arg(0);

template <std::string (*digest)(const std::string&)>
std::string portable(const std::string& input) {
  base::cpu::portable_only = true;
  std::string result = digest(input);
  base::cpu::portable_only = false;
  return result;
}

template <std::string (*digest)(const std::string&)>
void throughput(benchmark::State& state) {
  std::string buffer(static_cast<std::size_t>(state.range(0)), '\0');
  for (std::size_t i = 0; i < buffer.size(); ++i) buffer[i] = char(i * 131 + (i >> 9));
  for (auto _ : state) {
    std::string d = digest(buffer);
    benchmark::DoNotOptimize(d.data());
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK_TEMPLATE(throughput, base::md5)->Arg(16 << 20)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(throughput, base::sha1)->Arg(16 << 20)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(throughput, portable<base::sha1>)->Arg(16 << 20)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(throughput, base::sha256)->Arg(16 << 20)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(throughput, portable<base::sha256>)->Arg(16 << 20)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
