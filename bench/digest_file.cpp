// digest_file md5|sha1|sha256|sha1-portable|sha256-portable FILE: prints the hex
// digest of the file through the session's own digest commands, so it can be
// timed against md5sum and friends. The -portable names leave the CPU's SHA
// extensions unused.
#include <cstdio>
#include <string>

#include "base/cpu.hpp"
#include "session/streams.hpp"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::puts("usage: digest_file md5|sha1|sha256|sha1-portable|sha256-portable FILE");
    return 2;
  }
  std::string name = argv[1];
  base::cpu::portable_only = name.size() > 9 && name.compare(name.size() - 9, 9, "-portable") == 0;
  name = name.substr(0, name.find('-'));
  if (name == "md5") streams::md5(argv[2], stdout);
  else if (name == "sha1") streams::sha1(argv[2], stdout);
  else if (name == "sha256") streams::sha256(argv[2], stdout);
  else {
    std::printf("unknown digest: %s\n", argv[1]);
    return 2;
  }
  return 0;
}
