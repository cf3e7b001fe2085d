#include <benchmark/benchmark.h>

#include <string>

#include "base/digest.hpp"
#include "base/random.hpp"
#include "base/text.hpp"

namespace {

// The step of the hash-chain benchmark: a 64-character string to the hex text of
// its SHA-256 digest, which is the next string.
void chain_step(benchmark::State& state) {
  std::string s = base::randstr(64);
  for (auto _ : state) {
    s = base::hex(base::sha256(s));
    benchmark::DoNotOptimize(s.data());
  }
  state.SetItemsProcessed(state.iterations());
}

void throughput(benchmark::State& state, std::string (*digest)(const std::string&)) {
  std::string buffer(static_cast<std::size_t>(state.range(0)), '\0');
  for (std::size_t i = 0; i < buffer.size(); ++i) buffer[i] = char(i * 131 + (i >> 9));
  for (auto _ : state) {
    std::string d = digest(buffer);
    benchmark::DoNotOptimize(d.data());
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

// Runs `run` under `name` of the implementation chosen for the benchmark's
// time alone, then the preferred one again.
template <class Run>
void with(base::chooser<base::block_function>& blocks, const char* name, Run run) {
  blocks.use(name);
  run();
  blocks.use(nullptr);
}

}  // namespace

// Every digest under every implementation this CPU supports, named
// "throughput/sha256/sha-ni" and so on.
int main(int argc, char** argv) {
  struct digest {
    const char* name;
    base::chooser<base::block_function>& blocks;
    std::string (*run)(const std::string&);
  } digests[] = {{"md5", base::md5_implementations(), base::md5},
                 {"sha1", base::sha1_implementations(), base::sha1},
                 {"sha256", base::sha256_implementations(), base::sha256}};
  for (digest& d : digests)
    for (const auto& i : d.blocks) {
      if (!i.supported()) continue;
      base::chooser<base::block_function>* blocks = &d.blocks;
      const char* name = i.name;
      auto run = d.run;
      benchmark::RegisterBenchmark(("throughput/" + std::string(d.name) + "/" + name).c_str(),
                                   [=](benchmark::State& state) {
                                     with(*blocks, name, [&] { throughput(state, run); });
                                   })
          ->Arg(16 << 20)
          ->Unit(benchmark::kMillisecond);
      if (d.run == base::sha256)
        benchmark::RegisterBenchmark(("chain_step/" + std::string(name)).c_str(), [=](benchmark::State& state) {
          with(*blocks, name, [&] { chain_step(state); });
        });
    }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
