#include "base/digest.hpp"

#include "base/kernels.hpp"

namespace base {

namespace {

// The choosers' tables: the implementations in order of preference.
constexpr implementation<block_function> md5_table[] = {{"portable", md5_blocks_portable, nullptr}};
#if defined(VEXA_X86_KERNELS)
constexpr implementation<block_function> sha1_table[] = {{"sha-ni", x86::sha1_blocks_sha_ni, &cpu::features::sha_ni},
                                                         {"portable", sha1_blocks_portable, nullptr}};
constexpr implementation<block_function> sha256_table[] = {
    {"sha-ni", x86::sha256_blocks_sha_ni, &cpu::features::sha_ni}, {"portable", sha256_blocks_portable, nullptr}};
#elif defined(VEXA_ARM_KERNELS)
constexpr implementation<block_function> sha1_table[] = {{"armv8", arm::sha1_blocks_armv8, &cpu::features::armv8_sha1},
                                                         {"portable", sha1_blocks_portable, nullptr}};
constexpr implementation<block_function> sha256_table[] = {
    {"armv8", arm::sha256_blocks_armv8, &cpu::features::armv8_sha2}, {"portable", sha256_blocks_portable, nullptr}};
#else
constexpr implementation<block_function> sha1_table[] = {{"portable", sha1_blocks_portable, nullptr}};
constexpr implementation<block_function> sha256_table[] = {{"portable", sha256_blocks_portable, nullptr}};
#endif
chooser<block_function> md5_chooser(md5_table), sha1_chooser(sha1_table), sha256_chooser(sha256_table);

// The initial state words.
constexpr uint32_t md5_initial[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
constexpr uint32_t sha1_initial[5] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};
constexpr uint32_t sha256_initial[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                        0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

}  // namespace

chooser<block_function>& md5_implementations() { return md5_chooser; }
chooser<block_function>& sha1_implementations() { return sha1_chooser; }
chooser<block_function>& sha256_implementations() { return sha256_chooser; }

md5_context::md5_context() : digest_context(md5_chooser.get(), md5_initial, 4, false) {}
sha1_context::sha1_context() : digest_context(sha1_chooser.get(), sha1_initial, 5, true) {}
sha256_context::sha256_context() : digest_context(sha256_chooser.get(), sha256_initial, 8, true) {}

std::string md5(const std::string& input) { return md5_context().finish_with(input); }
std::string sha1(const std::string& input) { return sha1_context().finish_with(input); }
std::string sha256(const std::string& input) { return sha256_context().finish_with(input); }

}  // namespace base
