// digest_file md5|sha1|sha256|sha1-portable|sha256-portable FILE: prints the hex
// digest of the file, read in blocks as the session's digest commands read it, so
// it can be timed against md5sum and friends. The -portable names leave the CPU's
// SHA extensions unused.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "base/digest.hpp"
#include "base/file.hpp"
#include "base/text.hpp"

template <class Context>
std::string digest(const char* file) {
  base::reader in(file);
  std::vector<char> block(base::block_size);
  Context context;
  while (std::size_t n = in.read(block.data(), block.size())) context.add(block.data(), n);
  return context.finish();
}

int main(int argc, char** argv) {
  if (argc != 3) {
    std::puts("usage: digest_file md5|sha1|sha256|sha1-portable|sha256-portable FILE");
    return 2;
  }
  std::string name = argv[1];
  if (name == "sha1-portable") base::sha1_use_cpu_sha = false;
  if (name == "sha256-portable") base::sha256_use_cpu_sha = false;
  std::string bytes;
  if (name == "md5") bytes = digest<base::md5_context>(argv[2]);
  else if (name == "sha1" || name == "sha1-portable") bytes = digest<base::sha1_context>(argv[2]);
  else if (name == "sha256" || name == "sha256-portable") bytes = digest<base::sha256_context>(argv[2]);
  else {
    std::printf("unknown digest: %s\n", argv[1]);
    return 2;
  }
  std::printf("%s  %s\n", base::hex(bytes).c_str(), argv[2]);
  return 0;
}
