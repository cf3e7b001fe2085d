// digest_file md5|sha1|sha256|sha256-portable FILE: prints the hex digest of the
// whole file, like the session's digest commands, so it can be timed against
// md5sum and friends. sha256-portable leaves the CPU's SHA extensions unused.
#include <cstdio>
#include <cstring>
#include <string>

#include "base/digest.hpp"
#include "base/file.hpp"
#include "base/text.hpp"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::puts("usage: digest_file md5|sha1|sha256|sha256-portable FILE");
    return 2;
  }
  std::string (*digest)(const std::string&) = nullptr;
  if (std::strcmp(argv[1], "md5") == 0) digest = base::md5;
  if (std::strcmp(argv[1], "sha1") == 0) digest = base::sha1;
  if (std::strcmp(argv[1], "sha256") == 0) digest = base::sha256;
  if (std::strcmp(argv[1], "sha256-portable") == 0) {
    digest = base::sha256;
    base::sha256_use_sha_ni = false;
  }
  if (!digest) {
    std::printf("unknown digest: %s\n", argv[1]);
    return 2;
  }
  std::printf("%s  %s\n", base::hex(digest(base::load(argv[2]))).c_str(), argv[2]);
  return 0;
}
