// An arbitrary time, offset and pattern through calendar::format.
#include <cstdint>
#include <cstring>
#include <string>

#include "calendar/calendar.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < sizeof(double) + sizeof(int)) return 0;
  calendar time;
  int offset;
  std::memcpy(&time.seconds, data, sizeof(double));
  std::memcpy(&offset, data + sizeof(double), sizeof(int));
  size_t head = sizeof(double) + sizeof(int);
  std::string pattern(reinterpret_cast<const char*>(data) + head, size - head);
  time.format(pattern, offset);
  time.format("%Y-%m-%d %I:%M:%S %p %a %A %B %b %y %H %w %x %X %%", 0);
  return 0;
}
