// Whole-file access. Every open probes for a directory first, because fopen of a
// directory succeeds on Linux and a later read would fail in a less obvious way.
#pragma once

#include <dirent.h>
#include <sys/stat.h>

#include <cstdio>
#include <string>

namespace base {

inline std::FILE* open_file(const std::string& file) {
  if (DIR* dir = opendir(file.c_str())) {
    closedir(dir);
    return nullptr;
  }
  // Opening a FIFO or socket for reading blocks until a writer appears: such a
  // path counts as not openable, so no command can hang on it.
  struct stat st;
  if (stat(file.c_str(), &st) == 0 && (S_ISFIFO(st.st_mode) || S_ISSOCK(st.st_mode))) return nullptr;
  return std::fopen(file.c_str(), "rb");
}

inline bool exists(const std::string& file) {
  std::FILE* f = open_file(file);
  if (!f) return false;
  std::fclose(f);
  return true;
}

// A path whose size cannot be measured (a pipe, a terminal) loads as empty, like
// any other unreadable file. A file that shrinks keeps its measured length.
inline std::string load(const std::string& file) {
  std::FILE* f = open_file(file);
  if (!f) return std::string();
  long size = -1;
  if (std::fseek(f, 0, SEEK_END) == 0) size = std::ftell(f);
  std::string contents;
  if (size > 0 && std::fseek(f, 0, SEEK_SET) == 0) {
    contents.assign(static_cast<std::string::size_type>(size), '\0');
    size_t read = std::fread(&contents[0], static_cast<size_t>(size), 1, f);
    (void)read;  // a short read leaves the remaining bytes zero
  }
  std::fclose(f);
  return contents;
}

// Calls callback(line, number, offset) for every line of the file, the line with
// its line feed (the last may have none), numbers from 1, and offset the line's
// first byte in the file. Lines may span any number of 4096-byte blocks.
template <class F>
void for_each_line(const std::string& file, F callback) {
  std::FILE* f = open_file(file);
  if (!f) return;
  // A device such as /dev/zero never ends and may hold no line feed: like a file
  // whose size cannot be measured, it has no lines.
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
