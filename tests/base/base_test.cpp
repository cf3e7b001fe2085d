#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/base64.hpp"
#include "base/digest.hpp"
#include "base/escape.hpp"
#include "base/file.hpp"
#include "base/random.hpp"
#include "base/text.hpp"
#include "base/url.hpp"

using namespace std::string_literals;

namespace {

// Runs `check` under each implementation this CPU supports (a failure names it), then the preferred one.
template <class Function, class Check>
void for_each_implementation(base::chooser<Function>& algorithm, Check check) {
  for (const base::implementation<Function>& i : algorithm)
    if (i.supported()) {
      SCOPED_TRACE(i.name);
      ASSERT_TRUE(algorithm.use(i.name));
      check();
    }
  algorithm.use(nullptr);
}

// What `code` gives for each input under every implementation, against the portable one.
template <class Function, class Code>
void expect_agreement(base::chooser<Function>& algorithm, Code code, const std::vector<std::string>& inputs) {
  ASSERT_TRUE(algorithm.use("portable"));
  std::vector<std::string> portable;
  for (const std::string& input : inputs) portable.push_back(code(input));
  for_each_implementation(algorithm, [&] {
    for (size_t i = 0; i < inputs.size(); ++i) EXPECT_EQ(code(inputs[i]), portable[i]) << inputs[i];
  });
}

std::string escaped(const std::string& t) {
  std::string text(4 * t.size(), '\0');
  text.resize(base::c_escape_block(reinterpret_cast<const unsigned char*>(t.data()), t.size(), &text[0]));
  return text;
}
std::string url_encoded(const std::string& t) { return base::url_encode(t, false); }
std::string url_encoded_all(const std::string& t) { return base::url_encode(t, true); }

// Under every implementation: one million "a" (FIPS 180-4, RFC 1321), and the first eight hex
// digits at the lengths around the padding's boundaries (one, two or three blocks).
TEST(Base, Digests) {
  std::string pattern;
  for (int i = 0; i <= 130; ++i) pattern += char(i == 40 ? 0 : (i * 37 + 11) & 0xff);
  const std::pair<int, const char*> prefixes[] = {
      {0, "d41d8cd9 da39a3ee e3b0c442"}, {55, "7bd78d59 9a809bb9 05ae991b"}, {56, "f2590f38 186812f7 b5b34d66"},
      {64, "d6abf7dc 3cb88f18 a8afe62e"}, {119, "209cf522 0460506e 1c06c330"}, {120, "4c03b916 61ebeb86 e3354715"},
      {130, "a165ecba 65e750f2 67d3fc46"}};
  const struct {
    base::chooser<base::block_function>& blocks;
    std::string (*digest)(const std::string&);
    const char* million;
  } digests[] = {
      {base::md5_implementations(), base::md5, "7707d6ae4e027c70eea2a935c2296f21"},
      {base::sha1_implementations(), base::sha1, "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
      {base::sha256_implementations(), base::sha256,
       "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}};
  const std::string million(1000000, 'a');
  for (size_t k = 0; k < 3; ++k)
    for_each_implementation(digests[k].blocks, [&] {
      for (const auto& [n, expected] : prefixes)
        EXPECT_EQ(base::hex(digests[k].digest(pattern.substr(0, n))).substr(0, 8), std::string(expected, 9 * k, 8))
            << n << " bytes";
      EXPECT_EQ(base::hex(digests[k].digest(million)), digests[k].million);
    });
  // Bytes added in pieces of every size from 1 to 130 give the digest of the whole.
  const std::string input = pattern + pattern + pattern;
  auto in_pieces = [&](auto context, size_t piece) {
    for (size_t at = 0; at < input.size(); at += piece)
      context.add(input.data() + at, std::min(piece, input.size() - at));
    return context.finish();
  };
  for (size_t piece = 1; piece <= 130; ++piece)
    EXPECT_EQ(in_pieces(base::md5_context(), piece) + in_pieces(base::sha1_context(), piece) +
                  in_pieces(base::sha256_context(), piece),
              base::md5(input) + base::sha1(input) + base::sha256(input)) << "pieces of " << piece;
}

// Decoders take any text: Base64 gives "=" in place 1 or 2 the value 64, invalid characters 65;
// URL escapes go through the digit arithmetic whatever the digits.
TEST(Base, Codings) {
  const std::string base64[][2] = {{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"\xfb\xff\xbf", "+/+/"}};
  for (const auto& b : base64) EXPECT_EQ(base::base64(b[0]), b[1]);
  const std::string unbase64[][2] = {
      {"Zm9vY", "foo!"}, {"Zg==Zm8=", "ffo"}, {"Zm9v\0Zm8="s, "foo"}, {"Zm9vZ\0m8="s, "foo!"},
      {"/=//", "\xfc\x0f\xff"}, {"====", "\0"s}, {"    ", "\x04\x10" "A"},
      {"\x80\xff\xc3\xa9", "\x04\x10" "A"}};
  for (const auto& u : unbase64) {
    testing::internal::CaptureStdout();
    std::string bytes = base::unbase64(u[0]), warning = testing::internal::GetCapturedStdout();
    if (warning == "Warning: input string length not multiple of 4.\n") bytes += "!";  // is due
    EXPECT_EQ(bytes, u[1]) << u[0];
  }
  EXPECT_EQ(base::url_encode(";,/?:@&=+$#-_.!~*'()azAZ09 %", true),
            "%3B%2C%2F%3F%3A%40%26%3D%2B%24%23-_.!~*'()azAZ09%20%25");
  const std::string url[][3] = {  // text, decoded, decoded with + as blank
      {"a%20b+c", "a b+c", "a b c"}, {"%41%4a%4", "AJ%4", "AJ%4"}, {"%", "%", "%"},
      {"%zz%%41", "ST1", "ST1"}, {"% !%00x", "\xf1\0x"s, "\xf1\0x"s},
      {"%@@%``%??%aA", "\x10\xb9\xff\xaa", "\x10\xb9\xff\xaa"}};  // at the digit thresholds
  for (const auto& u : url)
    EXPECT_EQ(base::url_decode(u[0], false) + "|" + base::url_decode(u[0], true), u[1] + "|" + u[2]);
  std::string all;  // every byte value at every place of a Base64 group, there and back
  for (int i = 0; i < 771; ++i) all += char(i % 257);
  for (int flag : {0, 1}) EXPECT_EQ(base::url_decode(base::url_encode(all, flag), flag), all);
  for (size_t n : {0, 1, 2}) EXPECT_EQ(base::unbase64(base::base64(all.substr(n))), all.substr(n));
}

// Every implementation against the portable one at every length around the vector widths and
// alignment: URL text with an escape (or "%" among its digits) at each place, every byte as a digit,
// text with few or many changed bytes, Base64 with padding or an invalid character at each place.
TEST(Base, ImplementationsAgree) {
  std::string bytes, words;
  for (int i = 0; i < 300; ++i) bytes += char(i * 151 + 7);
  for (int i = 0; i < 4; ++i) words += "The \"quick\" fox?\tjumps (over) 1+1=2 & the lazy dog.\n";
  const char* percent_digits[] = {"%%4a", "%4a%", "%4%a"};
  std::vector<std::string> raw, text, url;
  for (size_t n = 0; n <= 200; ++n) {
    for (size_t offset = 0; offset < 4; ++offset) raw.push_back(bytes.substr(offset, n));
    text.push_back(words.substr(0, n));
    url.push_back(base::url_encode(bytes, true).substr(0, n));
    for (size_t at = 0; n >= 60 && at < n; ++at)
      url.push_back((bytes.substr(0, at) + percent_digits[at % 3] + bytes.substr(at)).substr(0, n));
  }
  url.emplace_back();  // every byte value as either digit, with no "%" among them
  for (int c = 0; c < 256; ++c)
    if (c != '%' && 255 - c != '%') url.back() += "%"s + char(c) + char(255 - c) + "-";
  std::vector<std::string> base64_text;
  const std::string plain = base::base64(bytes).substr(0, 256);
  for (size_t at = 0; at < 130; ++at)
    for (char odd : {'=', '~', '\x80'})
      base64_text.push_back((plain.substr(0, at) + odd + plain.substr(at + 1)).substr(at % 4));
  text.insert(text.end(), raw.begin(), raw.end());
  expect_agreement(base::base64_encode_implementations(), base::base64, raw);
  expect_agreement(base::unbase64_implementations(), base::unbase64, base64_text);
  expect_agreement(base::url_decode_implementations(), [](const std::string& t) { return base::url_decode(t, false); },
                   url);
  expect_agreement(base::c_escape_implementations(), escaped, text);
  expect_agreement(base::url_encode_implementations(), url_encoded, text);
  expect_agreement(base::url_encode_implementations(), url_encoded_all, text);
}

// Each byte value at each place of a 100-byte text (across 8-, 32- and 64-byte steps) is coded as alone.
TEST(Base, EncodersEveryByteAtEveryPlace) {
  auto every_byte_at_every_place = [](std::string (*encoded)(const std::string&)) {
    for (int c = 0; c < 256; ++c)
      for (size_t place = 0; place < 100; ++place) {
        std::string input(100, 'a'), before(place, 'a'), after(99 - place, 'a'), alone(1, char(c));
        input[place] = char(c);
        EXPECT_EQ(encoded(input), encoded(before) + encoded(alone) + encoded(after)) << c << " at " << place;
      }
  };
  for_each_implementation(base::c_escape_implementations(), [&] { every_byte_at_every_place(escaped); });
  for_each_implementation(base::url_encode_implementations(), [&] {
    every_byte_at_every_place(url_encoded);
    every_byte_at_every_place(url_encoded_all);
  });
}

// Lines come with their line feed, numbered from 1, with the offset of their first byte, across
// 4096-byte blocks. Directories, devices and missing files give no lines.
TEST(Base, Files) {
  std::string dir = testing::TempDir() + "vexa_files_XXXXXX";
  ASSERT_NE(mkdtemp(&dir[0]), nullptr);
  std::string path = dir + "/f";
  for (std::string tail : {"", "\n", "\r\nlast"})
    for (size_t first : {0, 1, 4083, 4095, 4096, 9000}) {  // 4083: three full blocks
      std::string content = std::string(first, 'x') + "\n\n\0\xff\n"s + std::string(8200, 'y') + tail;
      std::ofstream(path, std::ios::binary) << content;
      EXPECT_EQ(base::load(path), content);
      std::string joined;
      unsigned lines = 0;
      base::for_each_line(path, [&](const std::string& line, unsigned number, uint64_t offset) {
        EXPECT_EQ(number, ++lines);
        EXPECT_EQ(offset, joined.size());
        bool last = offset + line.size() == content.size() && content.back() != '\n';
        EXPECT_EQ(line.find('\n'), last ? std::string::npos : line.size() - 1) << number;
        joined += line;
      });
      EXPECT_EQ(joined, content);
      EXPECT_EQ(lines, tail.size() > 1 ? 5u : 4u);
    }
  // The length is measured at opening: a shrunk file gives zeros for its lost tail, a grown one no more.
  base::reader shrunk(path);
  std::string first(5, '?'), second(5, '?');
  ASSERT_EQ(truncate(path.c_str(), 3), 0);
  ASSERT_EQ(shrunk.read(&first[0], 5), 5u);
  base::reader grown(path);
  std::ofstream(path, std::ios::app) << "more";
  EXPECT_EQ(first + std::string(second, 0, grown.read(&second[0], 5)), "xxx\0\0xxx"s);
  // A file whose length reads as 0 is empty (though /proc's have lines for formula files); devices have no lines.
  const std::pair<std::string, bool> empty[] = {
      {dir, false}, {"/dev/zero", true}, {"/proc/self/status", true}, {dir + "/none", false}, {"", false}};
  for (const auto& [none, exists] : empty) {
    EXPECT_EQ(base::exists(none), exists) << none;
    EXPECT_EQ(base::load(none), "") << none;
    if (none.rfind("/proc/", 0) != 0)
      base::for_each_line(none, [&](const std::string&, unsigned, uint64_t) { ADD_FAILURE(); });
  }
  EXPECT_EQ(std::system(("rm -rf '" + dir + "'").c_str()), 0);
  std::FILE* pipe = popen("head -c 200000 /dev/zero | tr '\\0' x", "r");  // read to its end
  EXPECT_EQ(base::load("/dev/fd/" + std::to_string(fileno(pipe))), std::string(200000, 'x'));
  pclose(pipe);
}

TEST(Base, RandomText) {
  const std::string alphabet = "abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRTUVWXY346789";
  std::string s = base::randstr(4000);  // misses one of 52 characters with odds of about e^-77
  EXPECT_EQ(std::set<char>(s.begin(), s.end()), std::set<char>(alphabet.begin(), alphabet.end()));
  std::set<std::string> texts;  // each seeded afresh from the random device
  unsigned char seen[16] = {};  // every bit of every byte set by some UUID of 32: no bit fixed
  for (int i = 0; i < 32; ++i) {
    std::srand(1);
    unsigned char b[17] = {0};
    b[16] = 0xa5;
    std::string text = base::uuid(b), hex = base::hex(std::string(reinterpret_cast<char*>(b), 17));
    EXPECT_EQ(text + hex.substr(32), hex.substr(0, 8) + "-" + hex.substr(8, 4) + "-" +
              hex.substr(12, 4) + "-" + hex.substr(16, 4) + "-" + hex.substr(20, 12) + "a5");
    texts.insert(text);
    for (int k = 0; k < 16; ++k) seen[k] |= b[k];
  }
  EXPECT_EQ(std::string(seen, seen + 16), std::string(16, '\xff'));
  EXPECT_EQ(texts.size(), 32u);
}

}  // namespace
