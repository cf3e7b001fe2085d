#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "base/file.hpp"

namespace {

std::string temp_dir() {
  std::string dir = testing::TempDir() + "vexa_reader_XXXXXX";
  return mkdtemp(&dir[0]) ? dir : std::string();
}

void write(const std::string& path, const std::string& bytes) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  ASSERT_NE(f, nullptr);
  std::fwrite(bytes.data(), 1, bytes.size(), f);
  std::fclose(f);
}

std::string read_all(base::reader& in, std::size_t piece) {
  std::string bytes(piece, '\0'), all;
  while (std::size_t n = in.read(&bytes[0], piece)) all.append(bytes, 0, n);
  return all;
}

// The length is measured at opening: a file that shrinks afterwards gives zeros
// for its lost tail, one that grows is read only up to that length.
TEST(Reader, GivesExactlyTheLengthMeasuredAtOpening) {
  std::string dir = temp_dir(), path = dir + "/f";
  write(path, "abcdefgh");
  base::reader shrunk(path);
  ASSERT_EQ(truncate(path.c_str(), 3), 0);
  EXPECT_EQ(read_all(shrunk, 5), std::string("abc\0\0\0\0\0", 8));

  base::reader grown(path);
  write(path, "0123456789");
  EXPECT_EQ(read_all(grown, 2), "012");
  EXPECT_TRUE(grown.rewind());
  EXPECT_EQ(read_all(grown, 64), "012");
  EXPECT_EQ(base::load(path), "0123456789");
  std::remove(path.c_str());
  rmdir(dir.c_str());
}

TEST(Reader, PathsThatAreNoPlainFile) {
  std::string dir = temp_dir(), fifo = dir + "/fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  // A FIFO without a writer opens and is empty at once; it counts as existing.
  base::reader idle(fifo);
  EXPECT_TRUE(idle.is_open());
  EXPECT_EQ(read_all(idle, 16), "");
  EXPECT_TRUE(base::exists(fifo));
  // A pipe, which cannot seek, is read to its end.
  std::FILE* pipe = popen("printf 'piped bytes'", "r");
  ASSERT_NE(pipe, nullptr);
  base::reader piped("/dev/fd/" + std::to_string(fileno(pipe)));
  EXPECT_FALSE(piped.measured);
  EXPECT_EQ(read_all(piped, 4), "piped bytes");
  EXPECT_FALSE(piped.rewind());
  pclose(pipe);
  // Measured lengths of 0 give nothing, however much could be read.
  for (const char* path : {"/proc/self/status", "/dev/zero"}) {
    base::reader device(path);
    EXPECT_TRUE(device.is_open()) << path;
    EXPECT_EQ(read_all(device, 16), "") << path;
  }
  base::reader directory(dir);
  EXPECT_FALSE(directory.is_open());
  EXPECT_EQ(read_all(directory, 16), "");
  EXPECT_FALSE(base::exists(dir));
  std::remove(fifo.c_str());
  rmdir(dir.c_str());
}

}  // namespace
