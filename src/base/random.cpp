#include "base/random.hpp"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "base/text.hpp"

namespace base {

// Seeds rand from the kernel's random device, falling back to the time. The
// burn-in then discards values for about 30 ms of processor time, so where the
// sequence starts also depends on the machine's speed.
void seed_random() {
  uint32_t seed = static_cast<uint32_t>(std::time(nullptr));
  if (std::FILE* device = std::fopen("/dev/random", "rb")) {
    uint32_t bytes;
    if (std::fread(&bytes, sizeof bytes, 1, device) == 1) seed = bytes;
    std::fclose(device);
  }
  std::srand(seed);
  // 30 ms of processor time, counted as an unsigned difference: a 32-bit clock
  // wraps after 36 minutes of it, and an end past the wrap would never come. A
  // clock that fails (-1) must not keep the loop going forever either.
  unsigned long start = static_cast<unsigned long>(std::clock());
  for (std::clock_t now = std::clock();
       now != std::clock_t(-1) && static_cast<unsigned long>(now) - start < 30000; now = std::clock())
    std::rand();
}

// A number in [0, 1): rand's 31 bits scaled by 2^-31. The first call seeds.
double random() {
  static int x = (seed_random(), std::rand());
  (void)x;
  return std::rand() * (1.0 / 2147483648.0);
}

std::string randstr(int length) {
  // No l, o, I, O, S, Z, 0, 1, 2 or 5: the string may have to be read and retyped.
  static const std::string alphabet = "abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRTUVWXY346789";
  std::string text;
  if (length > 0) text.reserve(static_cast<std::size_t>(length));
  for (int i = 0; i < length; ++i)
    text += alphabet[static_cast<std::size_t>(alphabet.size() * random())];
  return text;
}

// 128 random bits as 8-4-4-4-12 lowercase hex. No version or variant bits are set.
// If `bytes` is not null, the 16 bytes the text spells are copied there too.
std::string uuid(void* bytes) {
  seed_random();
  unsigned char raw[16];
  for (int i = 0; i < 16; i += 2) {
    unsigned a = static_cast<unsigned>(std::rand());
    unsigned b = static_cast<unsigned>(std::rand());
    unsigned value = ((a << 1) ^ b) & 0xffff;
    raw[i] = static_cast<unsigned char>(value & 0xff);
    raw[i + 1] = static_cast<unsigned char>(value >> 8);
  }
  std::string text = hex(std::string(reinterpret_cast<char*>(raw), sizeof raw));
  for (std::string::size_type dash : {8, 13, 18, 23}) text.insert(dash, 1, '-');
  if (bytes) std::memcpy(bytes, raw, sizeof raw);
  return text;
}

}  // namespace base
