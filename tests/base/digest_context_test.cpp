#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "base/digest.hpp"
#include "base/text.hpp"

namespace {

std::string pattern(std::size_t n) {
  std::string bytes(n, '\0');
  for (std::size_t i = 0; i < n; ++i) bytes[i] = char((i * 37 + 11 + (i >> 8)) & 0xff);
  return bytes;
}

// Bytes added in pieces of every size from 1 to 130, cutting blocks everywhere,
// give the digest of the whole.
TEST(DigestContext, PiecesGiveTheDigestOfTheWhole) {
  const std::string input = pattern(1000);
  for (std::size_t piece = 1; piece <= 130; ++piece) {
    base::md5_context md5;
    base::sha1_context sha1;
    base::sha256_context sha256;
    for (std::size_t at = 0; at < input.size(); at += piece) {
      std::string part = input.substr(at, piece);
      md5.add(part.data(), part.size());
      sha1.add(part.data(), part.size());
      sha256.add(part.data(), part.size());
    }
    EXPECT_EQ(md5.finish(), base::md5(input)) << "pieces of " << piece;
    EXPECT_EQ(sha1.finish(), base::sha1(input)) << "pieces of " << piece;
    EXPECT_EQ(sha256.finish(), base::sha256(input)) << "pieces of " << piece;
  }
}

// The digests the system's tool prints for the inputs, one per line.
std::vector<std::string> tool_digests(const char* tool, const std::vector<std::string>& inputs) {
  std::string dir = testing::TempDir() + "vexa_paths_XXXXXX";
  if (!mkdtemp(&dir[0])) return {};
  std::string command = std::string("cd '") + dir + "' && " + tool;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    std::FILE* f = std::fopen((dir + "/" + std::to_string(i)).c_str(), "wb");
    std::fwrite(inputs[i].data(), 1, inputs[i].size(), f);
    std::fclose(f);
    command += " " + std::to_string(i);
  }
  std::vector<std::string> digests;
  std::FILE* out = popen(command.c_str(), "r");
  char line[256];
  while (out && std::fgets(line, sizeof line, out)) digests.push_back(std::string(line, std::strcspn(line, " ")));
  if (out) pclose(out);
  std::system(("rm -rf '" + dir + "'").c_str());
  return digests;
}

// The portable rounds and the SHA-instruction path (where the CPU has it) each
// agree with sha1sum and sha256sum around the padding boundaries and over many
// blocks at once.
TEST(DigestContext, EveryCompressorMatchesTheTools) {
  std::vector<std::string> inputs;
  for (std::size_t n : {0, 1, 55, 56, 63, 64, 65, 119, 120, 128, 1000, 100000}) inputs.push_back(pattern(n));
  inputs.push_back(std::string(1000000, 'a'));
  const std::vector<std::string> sha1sum = tool_digests("sha1sum", inputs);
  const std::vector<std::string> sha256sum = tool_digests("sha256sum", inputs);
  ASSERT_EQ(sha1sum.size(), inputs.size());
  ASSERT_EQ(sha256sum.size(), inputs.size());
  EXPECT_EQ(sha1sum.back(), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
  const bool saved1 = base::sha1_use_cpu_sha, saved256 = base::sha256_use_cpu_sha;
  for (bool fast : {false, true}) {
    base::sha1_use_cpu_sha = base::sha256_use_cpu_sha = fast;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      std::string where = (fast ? "fast path, length " : "portable, length ") + std::to_string(inputs[i].size());
      EXPECT_EQ(base::hex(base::sha1(inputs[i])), sha1sum[i]) << where;
      EXPECT_EQ(base::hex(base::sha256(inputs[i])), sha256sum[i]) << where;
    }
  }
  base::sha1_use_cpu_sha = saved1;
  base::sha256_use_cpu_sha = saved256;
}

}  // namespace
