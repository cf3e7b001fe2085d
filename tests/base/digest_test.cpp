#include "base/digest.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/text.hpp"

namespace {

using digest_fn = std::string (*)(const std::string&);

struct vector_case {
  digest_fn fn;
  std::string input;
  const char* hex;
};

// SHA-256 through its portable rounds, whatever the CPU offers.
std::string sha256_portable(const std::string& input) {
  bool saved = base::sha256_use_cpu_sha;
  base::sha256_use_cpu_sha = false;
  std::string digest = base::sha256(input);
  base::sha256_use_cpu_sha = saved;
  return digest;
}

const std::string million_a(1000000, 'a');
const std::string two_blocks = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";

TEST(Digest, KnownAnswers) {
  const vector_case cases[] = {
      // RFC 1321's and FIPS 180-4's examples, the two-block message, one million "a".
      {base::md5, "", "d41d8cd98f00b204e9800998ecf8427e"},
      {base::md5, "abc", "900150983cd24fb0d6963f7d28e17f72"},
      {base::md5, "message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
      {base::md5, two_blocks, "8215ef0796a20bcaaae116d3876c664a"},
      {base::md5, million_a, "7707d6ae4e027c70eea2a935c2296f21"},
      {base::sha1, "", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
      {base::sha1, "abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {base::sha1, two_blocks, "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
      {base::sha1, million_a, "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
      {base::sha256, "", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {base::sha256, "abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {base::sha256, two_blocks, "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {base::sha256, million_a, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
      {sha256_portable, million_a, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
      // A NUL inside the input is hashed like any other byte.
      {base::md5, std::string("a\0b", 3), "70350f6027bce3713f6b76473084309b"},
      {base::sha1, std::string("a\0b", 3), "4a3dec2d1f8245280855c42db0ee4239f917fdb8"},
      {base::sha256, std::string("a\0b", 3), "59b271ae1bbcb1d31d41929817f4b16fb439eb4f31520b5ad1d5ce98920a7138"},
      {base::sha256, std::string(1, '\0'), "6e340b9cffb37a989ca544e6bb780a2c78901d3fb33738768511a30617afa01d"},
  };
  for (const vector_case& c : cases) {
    std::string digest = c.fn(c.input);
    EXPECT_EQ(base::hex(digest), c.hex) << "input of " << c.input.size() << " bytes";
    EXPECT_EQ(digest, c.fn(c.input)) << "second call differs";
  }
}

// Every length from 0 to 130 bytes, across the padding boundaries at 55/56,
// 63/64 and 119/120, against the system's own tool. The bytes cover NUL and
// values above 0x7f.
void expect_matches_tool(digest_fn fn, const char* tool, std::size_t digest_size) {
  std::string pattern;
  for (int i = 0; i <= 130; ++i) pattern += char((i * 37 + 11) & 0xff);
  pattern[40] = '\0';

  std::string dir = testing::TempDir() + "vexa_digest_XXXXXX";
  ASSERT_NE(mkdtemp(&dir[0]), nullptr);
  std::string command = std::string("cd '") + dir + "' && " + tool;
  for (int n = 0; n <= 130; ++n) {
    std::string path = dir + "/" + std::to_string(n);
    std::FILE* f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fwrite(pattern.data(), 1, n, f);
    std::fclose(f);
    command += " " + std::to_string(n);
  }

  std::FILE* out = popen(command.c_str(), "r");
  ASSERT_NE(out, nullptr);
  char line[256];
  int n = 0;
  while (std::fgets(line, sizeof line, out)) {
    std::string expected(line, 2 * digest_size);
    std::string digest = fn(pattern.substr(0, n));
    EXPECT_EQ(digest.size(), digest_size);
    EXPECT_EQ(base::hex(digest), expected) << tool << ", length " << n;
    ++n;
  }
  EXPECT_EQ(pclose(out), 0);
  EXPECT_EQ(n, 131) << tool << " gave too few lines";
  std::system(("rm -rf '" + dir + "'").c_str());
}

TEST(Digest, Md5MatchesMd5sumForLengths0To130) { expect_matches_tool(base::md5, "md5sum", 16); }
TEST(Digest, Sha1MatchesSha1sumForLengths0To130) { expect_matches_tool(base::sha1, "sha1sum", 20); }
TEST(Digest, Sha256MatchesSha256sumForLengths0To130) { expect_matches_tool(base::sha256, "sha256sum", 32); }
TEST(Digest, PortableSha256MatchesSha256sumForLengths0To130) {
  expect_matches_tool(sha256_portable, "sha256sum", 32);
}

}  // namespace
