// File access: the file-or-directory test, whole-file loading, and a reader that
// gives the same bytes in fixed blocks. Every open probes for a directory first,
// because opening a directory succeeds on Linux and a later read would fail in a
// less obvious way.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

namespace base {

// The size of the blocks the file commands read: a multiple of 64 for the
// digests, of 3 for the Base64 encoder and of 4 for its decoder.
constexpr std::size_t block_size = 3 << 16;

// A descriptor open for reading, or -1. A FIFO is opened without waiting for a
// writer and then read normally: with no writer it reads as empty at once. A
// socket cannot be opened at all.
inline int open_read(const std::string& file) {
  if (DIR* dir = opendir(file.c_str())) {
    closedir(dir);
    return -1;
  }
  int fd = open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  int flags = fd >= 0 ? fcntl(fd, F_GETFL) : -1;
  if (flags >= 0) fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
  return fd;
}

inline std::FILE* open_file(const std::string& file) {
  int fd = open_read(file);
  if (fd < 0) return nullptr;
  std::FILE* f = fdopen(fd, "rb");
  if (!f) close(fd);
  return f;
}

inline bool exists(const std::string& file) {
  int fd = open_read(file);
  if (fd < 0) return false;
  close(fd);
  return true;
}

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
      ssize_t r = ::read(fd, buffer + got, n - got);
      if (r > 0) got += static_cast<std::size_t>(r);
      else if (r < 0 && errno == EINTR) continue;
      else ended = true;  // the end, or an error, which ends it as well
    }
    if (measured) {
      std::memset(buffer + got, 0, n - got);
      got = n;
      left -= n;
    }
    return got;
  }

  // Starts again from the first byte, for a second pass over a measured file.
  bool rewind() {
    if (fd < 0 || !measured || lseek(fd, 0, SEEK_SET) != 0) return false;
    left = size;
    ended = false;
    return true;
  }
};

// The whole file in one string: the bytes the reader gives, or an empty string
// when the file cannot be read.
inline std::string load(const std::string& file) {
  reader in(file);
  std::string contents;
  if (in.measured) {
    contents.resize(static_cast<std::string::size_type>(in.size));
    in.read(&contents[0], contents.size());
  } else {
    char block[1 << 16];
    while (std::size_t got = in.read(block, sizeof block)) contents.append(block, got);
  }
  return contents;
}

// Calls callback(line, number, offset) for every line of the file, the line with
// its line feed (the last may have none), numbers from 1, and offset the line's
// first byte in the file. Lines may span any number of 4096-byte blocks.
template <class F>
void for_each_line(const std::string& file, F callback) {
  std::FILE* f = open_file(file);
  if (!f) return;
  // A device such as /dev/zero never ends and may hold no line feed, and a FIFO
  // may wait for a writer: only regular files have lines.
  struct stat st;
  if (fstat(fileno(f), &st) != 0 || !S_ISREG(st.st_mode)) {
    std::fclose(f);
    return;
  }
  char block[4096];
  std::string pending;
  unsigned number = 1;
  unsigned offset = 0;
  size_t got;
  do {
    got = std::fread(block, 1, sizeof block, f);
    size_t cut = 0;
    for (size_t i = 0; i < got; ++i) {
      if (block[i] != '\n') continue;
      pending.append(block + cut, i + 1 - cut);
      callback(static_cast<const std::string&>(pending), number, offset);
      offset += static_cast<unsigned>(pending.size());
      pending.clear();
      ++number;
      cut = i + 1;
    }
    pending.append(block + cut, got - cut);
  } while (got == sizeof block);
  if (!pending.empty()) callback(static_cast<const std::string&>(pending), number, offset);
  std::fclose(f);
}

}  // namespace base
