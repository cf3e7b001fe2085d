// digest_file md5|sha1|sha256[/IMPLEMENTATION] FILE: prints the hex digest of the
// file through the session's own digest commands, so it can be timed against
// md5sum and friends; "sha256/portable" runs the portable rounds where the CPU
// has SHA instructions (the names are those of the algorithm's chooser).
#include <cstdio>
#include <string>

#include "base/digest.hpp"
#include "session/streams.hpp"

int main(int argc, char** argv) {
  std::string name = argc == 3 ? argv[1] : "", implementation;
  if (name.find('/') != std::string::npos) {
    implementation = name.substr(name.find('/') + 1);
    name.erase(name.find('/'));
  }
  struct digest {
    const char* name;
    base::chooser<base::block_function>& implementations;
    void (*run)(const std::string&, std::FILE*);
  } digests[] = {{"md5", base::md5_implementations(), streams::md5},
                 {"sha1", base::sha1_implementations(), streams::sha1},
                 {"sha256", base::sha256_implementations(), streams::sha256}};
  for (digest& d : digests)
    if (name == d.name) {
      if (!implementation.empty() && !d.implementations.use(implementation.c_str())) {
        std::printf("%s has no implementation %s this CPU runs\n", d.name, implementation.c_str());
        return 2;
      }
      d.run(argv[2], stdout);
      return 0;
    }
  std::puts("usage: digest_file md5|sha1|sha256[/IMPLEMENTATION] FILE");
  return 2;
}
