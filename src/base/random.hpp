// Random numbers, random strings over a look-alike-free alphabet, and random UUID
// text, all drawn from the C library's rand.
#pragma once

#include <string>

namespace base {

// Seeds rand from the kernel's random device, falling back to the time, then
// discards values for about 30 ms of processor time.
void seed_random();

// A number in [0, 1): rand's 31 bits scaled by 2^-31. The first call seeds.
double random();

// `length` characters drawn from an alphabet without look-alikes.
std::string randstr(int length);

// 128 random bits as 8-4-4-4-12 lowercase hex, freshly seeded. No version or
// variant bits are set. If `bytes` is not null, the 16 bytes the text spells
// are copied there too.
std::string uuid(void* bytes);

}  // namespace base
