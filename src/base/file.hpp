// File access: the file-or-directory test, whole-file loading, and a reader that
// gives the same bytes in fixed blocks. Every file is opened once, as fopen(path,
// "rb") would open it, and whatever reads it gets that one descriptor, so that a
// FIFO's writer or a lease holder meets vexa exactly once.
#pragma once

#include <poll.h>  // the events of wait_until_ready
#include <unistd.h>

#include <cerrno>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>

namespace base {

// The size of the blocks the file commands read: a multiple of 64 for the
// digests, of 3 for the Base64 encoder and of 4 for its decoder. Measured on a
// 256 MiB file, 768 KiB beat 192 and 384 KiB by a few per cent (fewer reads),
// and a block with its coded text still fits a 1 MiB second-level cache.
constexpr std::size_t block_size = 3 << 18;

// Blocks start on a page: the kernel copies into such a buffer several times
// faster than into one a few bytes past a boundary.
constexpr std::size_t page_size = 4096;

// A descriptor that another program made non-blocking reports EAGAIN when it has
// nothing yet; that means wait (poll for `events`), never the end of the data.
// Every caller tries its call again after the wait, so a wait cut short by a
// signal needs no retry.
void wait_until_ready(int fd, short events);

// Reads up to n bytes, waiting through EINTR and EAGAIN; 0 only at the end of the
// data or on an error that no retry can mend.
std::size_t read_some(int fd, char* buffer, std::size_t n);

// A descriptor open for reading, or -1. A directory is not a file; anything else
// opens as fopen does, blocking: a FIFO waits for its writer and a file under a
// lease waits until the lease is broken. A socket cannot be opened.
int open_read(const std::string& file);

bool exists(const std::string& file);

// A page-aligned buffer of a block or so; throws std::bad_alloc like any other
// allocation, which the session reports as "Out of memory".
struct block_buffer {
  char* data;
  std::size_t size;

  explicit block_buffer(std::size_t n)
      : data(static_cast<char*>(std::aligned_alloc(page_size, (n + page_size - 1) / page_size * page_size))),
        size(n) {
    if (!data) throw std::bad_alloc();
  }
  ~block_buffer() { std::free(data); }
  block_buffer(const block_buffer&) = delete;
  block_buffer& operator=(const block_buffer&) = delete;
};

// A file's contents block by block. The length is measured by seeking to the end
// when the file opens: exactly that many bytes are given, zeros standing in for a
// tail that is gone by the time it is read. A length of 0 (entries of /proc, and
// devices such as /dev/zero) gives nothing. A path that cannot seek at all (a
// pipe, a FIFO, a terminal) is read to its end instead.
struct reader {
  int fd;
  bool measured = true;
  uint64_t size = 0;  // the measured length
  uint64_t left = 0;  // bytes of it still to give
  bool ended = false;

  explicit reader(const std::string& file);
  ~reader();
  reader(const reader&) = delete;
  reader& operator=(const reader&) = delete;

  bool is_open() const { return fd >= 0; }

  // Fills buffer with up to n bytes and returns how many; fewer than n only at
  // the end, 0 once there.
  std::size_t read(char* buffer, std::size_t n);
};

// The whole file in one string: the bytes the reader gives, or an empty string
// when the file cannot be read.
std::string load(const std::string& file);

// Calls callback(line, number, offset) for every line read from fd until the
// callback returns false: the line with its line feed (the last may have none),
// numbers from 1, and offset the line's first byte. Only regular files and FIFOs
// have lines: a device such as /dev/zero may never end nor hold a line feed.
using line_callback = std::function<bool(const std::string& line, unsigned number, uint64_t offset)>;
void for_each_line_of(int fd, const line_callback& callback);

// The same for a file by name; every line is read.
using each_line_callback = std::function<void(const std::string& line, unsigned number, uint64_t offset)>;
void for_each_line(const std::string& file, const each_line_callback& callback);

}  // namespace base
