// SHA-1 and SHA-256 through the arm64 SHA instructions, each forced on and off:
// known answers, and agreement with the portable rounds at every length across
// several blocks. Built only where digest_arm.hpp has the arm64 path, and
// skipped on CPUs without the instructions.
#include <gtest/gtest.h>

#include <string>

#include "base/digest.hpp"
#include "base/text.hpp"

#if defined(VEXA_ARM_SHA)
namespace {

using digest_fn = std::string (*)(const std::string&);

struct algorithm {
  const char* name;
  digest_fn fn;
  bool* use_arm_sha;
  bool (*supported)();
  const char* known[4];  // of "", "abc", the 56-byte message, one million "a"
};

const algorithm algorithms[] = {
    {"SHA-1", base::sha1, &base::sha1_use_cpu_sha, base::arm_sha1_supported,
     {"da39a3ee5e6b4b0d3255bfef95601890afd80709", "a9993e364706816aba3e25717850c26c9cd0d89d",
      "84983e441c3bd26ebaae4aa1f95129e5e54670f1", "34aa973cd4c4daa4f61eeb2bdbad27316534016f"}},
    {"SHA-256", base::sha256, &base::sha256_use_cpu_sha, base::arm_sha256_supported,
     {"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
      "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
      "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1",
      "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}},
};

std::string digest_with(const algorithm& a, bool arm, const std::string& input) {
  bool saved = *a.use_arm_sha;
  *a.use_arm_sha = arm;
  std::string digest = a.fn(input);
  *a.use_arm_sha = saved;
  return digest;
}

TEST(DigestArm, InstructionsAndPortableRoundsAgree) {
  const std::string inputs[4] = {"", "abc", "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
                                 std::string(1000000, 'a')};
  // Lengths 0 to 300 run up to six blocks through one call; the bytes cover NUL
  // and values above 0x7f.
  std::string pattern;
  for (int i = 0; i < 300; ++i) pattern += char((i * 37 + 11) & 0xff);
  int tested = 0;
  for (const algorithm& a : algorithms) {
    if (!a.supported()) continue;
    ++tested;
    EXPECT_TRUE(*a.use_arm_sha) << a.name << ": the instructions are there but not used";
    for (bool arm : {true, false})
      for (int i = 0; i < 4; ++i)
        EXPECT_EQ(base::hex(digest_with(a, arm, inputs[i])), a.known[i])
            << a.name << (arm ? " instructions" : " portable") << ", input of " << inputs[i].size() << " bytes";
    for (std::size_t n = 0; n <= pattern.size(); ++n)
      EXPECT_EQ(digest_with(a, true, pattern.substr(0, n)), digest_with(a, false, pattern.substr(0, n)))
          << a.name << ", length " << n;
  }
  if (!tested) GTEST_SKIP() << "this CPU has no arm64 SHA-1 or SHA-256 instructions";
}

}  // namespace
#endif
