#include "session/bench.hpp"

#include <cstdio>
#include <ctime>

#include "base/digest.hpp"
#include "base/random.hpp"
#include "base/text.hpp"

static std::string chain_step(const std::string& s) { return base::hex(base::sha256(s)); }

void bench() {
  std::string s = base::randstr(64);
  std::puts(s.c_str());
  std::fflush(stdout);
  double start = static_cast<double>(std::time(nullptr)), now = 0.0;
  int count = 0;
  // Steps within the starting second are not counted: the count then covers
  // whole seconds only, from the first change of the clock on.
  while (now - start < 10.0) {
    s = chain_step(s);
    now = static_cast<double>(std::time(nullptr));
    if (now > start) ++count;
  }
  int rate = static_cast<int>(count / ((now - start) - 1.0));
  std::puts(s.c_str());
  std::printf("%s hashes per second\n", base::comma(base::num(rate)).c_str());
}

static bool is_chain_string(const std::string& s) {
  return s.size() == 64 && s.find_first_not_of("0123456789abcdef") == std::string::npos;
}

// Every string a chain reaches is 64 lowercase hex digits, so any other end
// string is refused at once.
void verify(const std::string& args, int limit) {
  std::string a = args.size() == 129 ? args.substr(0, 64) : std::string();
  std::string b = args.size() == 129 ? args.substr(65) : std::string();
  if (args.size() != 129 || args[64] != ':' || (a != b && !is_chain_string(b))) {
    std::puts("Invalid benchmark string.");
    return;
  }
  double start = static_cast<double>(std::time(nullptr));
  int count = 0;
  while (a != b && count < limit) {
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
