// Replays saved inputs through a fuzz target without libFuzzer, so that a crash
// found by the fuzzer reproduces under gdb or valgrind: replay_X FILE-OR-DIR...
#include <dirent.h>

#include <cstdint>
#include <cstdio>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

static int replay(const std::string& path) {
  if (DIR* dir = opendir(path.c_str())) {
    int count = 0;
    while (dirent* entry = readdir(dir))
      if (entry->d_name[0] != '.') count += replay(path + "/" + entry->d_name);
    closedir(dir);
    return count;
  }
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) {
    std::fprintf(stderr, "cannot read %s\n", path.c_str());
    return 0;
  }
  std::string bytes;
  char block[4096];
  size_t got;
  while ((got = std::fread(block, 1, sizeof block, f)) > 0) bytes.append(block, got);
  std::fclose(f);
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  return 1;
}

int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) count += replay(argv[i]);
  std::fprintf(stderr, "replayed %d inputs\n", count);
  return count > 0 ? 0 : 1;
}
