// File access: the file-or-directory test, whole-file loading, and a reader that
// gives the same bytes in fixed blocks. Every file is opened once, as fopen(path,
// "rb") would open it, and whatever reads it gets that one descriptor, so that a
// FIFO's writer or a lease holder meets vexa exactly once.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
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
// nothing yet; that means wait, never the end of the data. Every caller tries
// its call again after the wait, so a wait cut short by a signal needs no retry.
inline void wait_until_ready(int fd, short events) {
  pollfd ready = {fd, events, 0};
  poll(&ready, 1, -1);
}

// Reads up to n bytes, waiting through EINTR and EAGAIN; 0 only at the end of the
// data or on an error that no retry can mend.
inline std::size_t read_some(int fd, char* buffer, std::size_t n) {
  for (;;) {
    ssize_t got = ::read(fd, buffer, n);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno == EAGAIN || errno == EWOULDBLOCK) wait_until_ready(fd, POLLIN);
    else if (errno != EINTR) return 0;
  }
}

// A descriptor open for reading, or -1. A directory is not a file; anything else
// opens as fopen does, blocking: a FIFO waits for its writer and a file under a
// lease waits until the lease is broken. A socket cannot be opened.
inline int open_read(const std::string& file) {
  int fd;
  do fd = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  while (fd < 0 && errno == EINTR);
  struct stat st;
  if (fd >= 0 && (fstat(fd, &st) != 0 || S_ISDIR(st.st_mode))) {
    close(fd);
    fd = -1;
  }
  return fd;
}

inline bool exists(const std::string& file) {
  int fd = open_read(file);
  if (fd < 0) return false;
  close(fd);
  return true;
}

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

  explicit reader(const std::string& file) : fd(open_read(file)) {
    if (fd < 0) return;
    off_t end = lseek(fd, 0, SEEK_END);
    if (end < 0 && errno == ESPIPE) measured = false;
    else if (end > 0 && lseek(fd, 0, SEEK_SET) == 0) size = left = static_cast<uint64_t>(end);
  }
  ~reader() {
    if (fd >= 0) close(fd);
  }
  reader(const reader&) = delete;
  reader& operator=(const reader&) = delete;

  bool is_open() const { return fd >= 0; }

  // Fills buffer with up to n bytes and returns how many; fewer than n only at
  // the end, 0 once there.
  std::size_t read(char* buffer, std::size_t n) {
    if (fd < 0) return 0;
    if (measured && n > left) n = static_cast<std::size_t>(left);
    std::size_t got = 0;
    while (got < n && !ended) {
      std::size_t r = read_some(fd, buffer + got, n - got);
      if (r == 0) ended = true;
      got += r;
    }
    if (measured) {
      std::memset(buffer + got, 0, n - got);
      got = n;
      left -= n;
    }
    return got;
  }
};

// The whole file in one string: the bytes the reader gives, or an empty string
// when the file cannot be read.
inline std::string load(const std::string& file) {
  reader in(file);
  std::string contents;
  if (in.measured) {
    // A 32-bit machine cannot hold a file past its address space in one string.
    if (in.size > contents.max_size()) throw std::bad_alloc();
    contents.resize(static_cast<std::string::size_type>(in.size));
    in.read(&contents[0], contents.size());
  } else {
    char block[1 << 16];
    while (std::size_t got = in.read(block, sizeof block)) contents.append(block, got);
  }
  return contents;
}

// Calls callback(line, number, offset) for every line read from fd until the
// callback returns false: the line with its line feed (the last may have none),
// numbers from 1, and offset the line's first byte. Only regular files and FIFOs
// have lines: a device such as /dev/zero may never end nor hold a line feed.
template <class F>
void for_each_line_of(int fd, F callback) {
  struct stat st;
  if (fstat(fd, &st) != 0 || !(S_ISREG(st.st_mode) || S_ISFIFO(st.st_mode))) return;
  char block[4096];
  std::string pending;
  unsigned number = 1;
  uint64_t offset = 0;
  while (std::size_t got = read_some(fd, block, sizeof block)) {
    std::size_t cut = 0;
    for (const char* feed; (feed = static_cast<const char*>(std::memchr(block + cut, '\n', got - cut)));) {
      std::size_t end = static_cast<std::size_t>(feed - block) + 1;
      pending.append(block + cut, end - cut);
      if (!callback(static_cast<const std::string&>(pending), number, offset)) return;
      offset += pending.size();
      pending.clear();
      ++number;
      cut = end;
    }
    pending.append(block + cut, got - cut);
  }
  if (!pending.empty()) callback(static_cast<const std::string&>(pending), number, offset);
}

// The same for a file by name; every line is read.
template <class F>
void for_each_line(const std::string& file, F callback) {
  int fd = open_read(file);
  if (fd < 0) return;
  for_each_line_of(fd, [&](const std::string& line, unsigned number, uint64_t offset) {
    callback(line, number, offset);
    return true;
  });
  close(fd);
}

}  // namespace base
