// The file commands, read in blocks, print what the whole-string functions give, at sizes around the
// block size, from files and pipes.
#include "session/streams.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "base/base64.hpp"
#include "base/digest.hpp"
#include "base/file.hpp"
#include "base/text.hpp"
#include "base/url.hpp"

namespace {

const std::size_t B = base::block_size;
const std::size_t sizes[] = {0, 1, B - 1, B, B + 1, 3 * B + 1, 3 * B + 2};

using stream_fn = bool (*)(const std::string&, std::FILE*);

// What `run` prints for `input` in a file, or in a pipe that cat feeds.
std::string streamed(stream_fn run, const std::string& input, bool pipe) {
  std::string dir = testing::TempDir() + "vexa_stream_XXXXXX";
  if (!mkdtemp(&dir[0])) return "<no temporary folder>";
  std::string path = dir + "/input", printed = dir + "/output";
  std::ofstream(path, std::ios::binary) << input;
  std::FILE* feed = pipe ? popen(("cat '" + path + "'").c_str(), "r") : nullptr;
  std::FILE* out = std::fopen(printed.c_str(), "wb");
  bool opened = run(feed ? "/dev/fd/" + std::to_string(fileno(feed)) : path, out);
  if (feed) pclose(feed);
  std::fclose(out);
  std::string result = opened ? base::load(printed) : "<not opened>";
  std::remove(path.c_str()), std::remove(printed.c_str()), rmdir(dir.c_str());
  return result;
}

// What puts prints of a result: up to its first zero byte, then a line feed.
std::string puts_of(const std::string& text) { return text.substr(0, text.find('\0')) + "\n"; }

std::string bytes_of(std::size_t n, unsigned seed) {
  std::string bytes(n, '\0');
  for (std::size_t i = 0; i < n; ++i) bytes[i] = char((i * 131 + seed + (i >> 7)) & 0xff);
  return bytes;
}

TEST(Streams, MatchTheWholeStringFunctions) {
  // The digest commands as stream_fn: they always open, even nothing.
  stream_fn md5 = [](const std::string& f, std::FILE* out) { return streams::md5(f, out), true; };
  stream_fn sha1 = [](const std::string& f, std::FILE* out) { return streams::sha1(f, out), true; };
  stream_fn sha256 = [](const std::string& f, std::FILE* out) { return streams::sha256(f, out), true; };
  const std::string warning = std::string(base::base64_length_warning) + "\n";
  for (bool pipe : {false, true})
    for (std::size_t n : sizes) {
      std::string input = bytes_of(n, 7), where = (pipe ? "pipe of " : "file of ") + std::to_string(n) + " bytes";
      EXPECT_EQ(streamed(md5, input, pipe), base::hex(base::md5(input)) + "\n") << where;
      EXPECT_EQ(streamed(sha1, input, pipe), base::hex(base::sha1(input)) + "\n") << where;
      EXPECT_EQ(streamed(sha256, input, pipe), base::hex(base::sha256(input)) + "\n") << where;
      EXPECT_EQ(streamed(streams::base64, input, pipe), base::base64(input) + "\n") << where;
      EXPECT_EQ(streamed(streams::url_encode, input, pipe), base::url_encode(input, false) + "\n") << where;
      // Base64 text with a zero byte early or late (ending the text), decoded zero bytes (ending the print).
      for (std::size_t zero : {std::size_t(0), std::size_t(6), B + 3, 3 * B}) {
        std::string bytes = bytes_of(n, 1) + "x";  // "x": a tail of any length
        for (char& c : bytes) c = c == 0 ? 'z' : c;
        // Padding and invalid characters in the second half: a pipe's decoded bytes overflow the spool's memory.
        std::string text = base::base64(bytes).substr(0, n);
        for (std::size_t i = n / 2; i < n; i += 97) text[i] = "A=~"[i % 3];
        if (zero != 0 && zero < n) text[zero] = '\0';
        std::size_t end = text.find('\0') == std::string::npos ? n : text.find('\0');
        std::string expected = (end % 4 ? warning : "") + puts_of(base::unbase64(text.substr(0, end / 4 * 4)));
        EXPECT_EQ(streamed(streams::unbase64, text, pipe), expected) << where << ", zero at " << zero;
      }
      // An escape cut by a block's end decodes as in one piece; one too short at the very end stays.
      for (std::size_t percent : {B - 3, B - 2, B - 1, n - 2, n - 1}) {
        std::string text = base::url_encode(bytes_of(n, 3), false).substr(0, n);
        for (char& c : text) c = c == '%' || c == 0 ? 'z' : c;
        for (std::size_t at = percent; at < n && at < percent + 3; ++at) text[at] = "%4a"[at - percent];
        if (n > 40) text[n - 20] = '\0';  // a zero byte late ends what is printed
        EXPECT_EQ(streamed(streams::url_decode, text, pipe), puts_of(base::url_decode(text, false)))
            << where << ", % at " << percent;
      }
    }
}

}  // namespace
