#include "session/bench.hpp"

#include <climits>
#include <cstdio>
#include <ctime>

#include "base/digest.hpp"
#include "base/random.hpp"
#include "base/text.hpp"

namespace {

// A chain's strings are 64 characters: the random start, then the hex digests.
constexpr std::size_t chain_string_size = 64;
// "start:end", as the user joins the two lines bench prints.
constexpr std::size_t benchmark_string_size = 2 * chain_string_size + 1;
constexpr double bench_seconds = 10.0;
// Counts are 32-bit: a chain that never reaches its end gives up here.
constexpr int most_steps = INT_MAX;

std::string chain_step(const std::string& s) { return base::hex(base::sha256(s)); }

bool is_chain_string(const std::string& s) {
  return s.size() == chain_string_size && s.find_first_not_of("0123456789abcdef") == std::string::npos;
}

}  // namespace

void bench() {
  std::string s = base::randstr(static_cast<int>(chain_string_size));
  std::puts(s.c_str());
  std::fflush(stdout);
  double start = static_cast<double>(std::time(nullptr)), now = 0.0;
  int count = 0;
  // Steps within the starting second are not counted: the count then covers
  // whole seconds only, from the first change of the clock on.
  while (now - start < bench_seconds) {
    s = chain_step(s);
    now = static_cast<double>(std::time(nullptr));
    if (now > start) ++count;
  }
  int rate = static_cast<int>(count / ((now - start) - 1.0));
  std::puts(s.c_str());
  std::printf("%s hashes per second\n", base::comma(base::num(rate)).c_str());
}

// Every string a chain reaches is 64 lowercase hex digits, so any other end
// string is refused at once.
void verify(const std::string& args) {
  bool sized = args.size() == benchmark_string_size;
  std::string a = sized ? args.substr(0, chain_string_size) : std::string();
  std::string b = sized ? args.substr(chain_string_size + 1) : std::string();
  if (!sized || args[chain_string_size] != ':' || (a != b && !is_chain_string(b))) {
    std::puts("Invalid benchmark string.");
    return;
  }
  double start = static_cast<double>(std::time(nullptr));
  int count = 0;
  while (a != b && count < most_steps) {
    a = chain_step(a);
    ++count;
  }
  int elapsed = static_cast<int>(static_cast<double>(std::time(nullptr)) - start);
  // Within one second of the clock the count itself is the best rate to show.
  int rate = elapsed > 0 ? count / elapsed : count;
  std::printf("%s after %s hashes in ~%s seconds.\n", a == b ? "Found" : "Not found",
              base::comma(base::num(count)).c_str(), base::num(elapsed).c_str());
  std::printf("~%s hashes per second\n", base::comma(base::num(rate)).c_str());
}
