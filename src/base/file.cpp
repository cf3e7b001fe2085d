#include "base/file.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace base {

void wait_until_ready(int fd, short events) {
  pollfd ready = {fd, events, 0};
  poll(&ready, 1, -1);
}

std::size_t read_some(int fd, char* buffer, std::size_t n) {
  for (;;) {
    ssize_t got = ::read(fd, buffer, n);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno == EAGAIN || errno == EWOULDBLOCK) wait_until_ready(fd, POLLIN);
    else if (errno != EINTR) return 0;
  }
}

int open_read(const std::string& file) {
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

bool exists(const std::string& file) {
  int fd = open_read(file);
  if (fd < 0) return false;
  close(fd);
  return true;
}

reader::reader(const std::string& file) : fd(open_read(file)) {
  if (fd < 0) return;
  off_t end = lseek(fd, 0, SEEK_END);
  if (end < 0 && errno == ESPIPE) measured = false;
  else if (end > 0 && lseek(fd, 0, SEEK_SET) == 0) size = left = static_cast<uint64_t>(end);
}

reader::~reader() {
  if (fd >= 0) close(fd);
}

std::size_t reader::read(char* buffer, std::size_t n) {
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

std::string load(const std::string& file) {
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

void for_each_line_of(int fd, const line_callback& callback) {
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

void for_each_line(const std::string& file, const each_line_callback& callback) {
  int fd = open_read(file);
  if (fd < 0) return;
  for_each_line_of(fd, [&](const std::string& line, unsigned number, uint64_t offset) {
    callback(line, number, offset);
    return true;
  });
  close(fd);
}

}  // namespace base
