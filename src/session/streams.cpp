#include "session/streams.hpp"

#include <cstring>
#include <vector>

#include "base/base64.hpp"
#include "base/digest.hpp"
#include "base/file.hpp"
#include "base/text.hpp"
#include "base/url.hpp"

namespace streams {

namespace {

const std::size_t block = base::block_size;

template <class Context>
void digest(const std::string& file, std::FILE* out) {
  base::reader in(file);
  std::vector<char> bytes(block);
  Context context;
  while (std::size_t n = in.read(bytes.data(), block)) context.add(bytes.data(), n);
  std::fprintf(out, "%s\n", base::hex(context.finish()).c_str());
}

// Writes n bytes up to the first zero byte among them, as puts would print
// them, and tells whether there was one: then nothing more is printed.
bool write_to_zero(const char* p, std::size_t n, std::FILE* out) {
  const char* zero = static_cast<const char*>(std::memchr(p, 0, n));
  std::fwrite(p, 1, zero ? static_cast<std::size_t>(zero - p) : n, out);
  return zero != nullptr;
}

// Reads the file to its end and writes encode(block, n, text) of each block,
// then the line feed. The encoders never produce a zero byte.
template <class Encode>
void encode_file(base::reader& in, std::FILE* out, std::size_t growth, Encode encode) {
  std::vector<char> bytes(block), text(growth * block);
  while (std::size_t n = in.read(bytes.data(), block)) {
    std::size_t size = encode(reinterpret_cast<const unsigned char*>(bytes.data()), n, text.data());
    std::fwrite(text.data(), 1, size, out);
  }
  std::fputc('\n', out);
}

// Bytes held back until they may be printed: in memory up to a block, beyond
// that in a temporary file (or, should none be available, in memory after all).
struct spool {
  std::string held;
  std::FILE* file = nullptr;

  spool() = default;
  spool(const spool&) = delete;
  spool& operator=(const spool&) = delete;
  ~spool() {
    if (file) std::fclose(file);
  }

  void add(const char* p, std::size_t n) {
    if (!file && held.size() + n > block && (file = std::tmpfile())) {
      std::fwrite(held.data(), 1, held.size(), file);
      held.clear();
    }
    if (file) std::fwrite(p, 1, n, file);
    else held.append(p, n);
  }

  void copy_to(std::FILE* out) {
    if (file) {
      std::rewind(file);
      std::vector<char> bytes(block);
      while (std::size_t n = std::fread(bytes.data(), 1, block, file)) std::fwrite(bytes.data(), 1, n, out);
    }
    std::fwrite(held.data(), 1, held.size(), out);
  }
};

// The length of the text, which ends at its first zero byte, of the next n bytes.
std::size_t text_length(const char* p, std::size_t n) {
  const char* zero = static_cast<const char*>(std::memchr(p, 0, n));
  return zero ? static_cast<std::size_t>(zero - p) : n;
}

void warn_unless_whole_groups(uint64_t length, std::FILE* out) {
  if (length % 4 != 0) std::fprintf(out, "%s\n", base::base64_length_warning);
}

}  // namespace

void md5(const std::string& file, std::FILE* out) { digest<base::md5_context>(file, out); }
void sha1(const std::string& file, std::FILE* out) { digest<base::sha1_context>(file, out); }
void sha256(const std::string& file, std::FILE* out) { digest<base::sha256_context>(file, out); }

void escape(const std::string& file, std::FILE* out) {
  // A backslash and a letter for the named bytes, the byte itself for the rest
  // of 32 to 126, a backslash, x and two digits for every other byte.
  static const base::byte_codes codes = [] {
    static const char named[][2] = {{'"', '"'},  {'\\', '\\'}, {'\b', 'b'}, {'\f', 'f'},
                                    {'\n', 'n'}, {'\r', 'r'},   {'\t', 't'}, {'\0', '0'}};
    static const char digits[] = "0123456789abcdef";
    base::byte_codes t;
    for (int c = 0; c < 256; ++c) {
      char* text = t.text[c];
      if (c >= 32 && c <= 126) {
        text[0] = static_cast<char>(c);
        t.size[c] = 1;
      } else {
        const char hex[4] = {'\\', 'x', digits[c >> 4], digits[c & 15]};
        std::memcpy(text, hex, 4);
        t.size[c] = 4;
      }
    }
    for (const char* name : named) {
      char* text = t.text[static_cast<unsigned char>(name[0])];
      text[0] = '\\';
      text[1] = name[1];
      t.size[static_cast<unsigned char>(name[0])] = 2;
    }
    return t;
  }();
  base::reader in(file);
  encode_file(in, out, 4, [](const unsigned char* p, std::size_t n, char* text) {
    return base::encode_bytes(codes, p, n, text);
  });
}

bool base64(const std::string& file, std::FILE* out) {
  base::reader in(file);
  if (!in.is_open()) return false;
  // Blocks are a multiple of 3 bytes, so only the last one is padded.
  encode_file(in, out, 2, base::base64_encode);
  return true;
}

bool url_encode(const std::string& file, std::FILE* out) {
  base::reader in(file);
  if (!in.is_open()) return false;
  encode_file(in, out, 4, [](const unsigned char* p, std::size_t n, char* text) {
    return base::url_encode_block(p, n, false, text);
  });
  return true;
}

bool url_decode(const std::string& file, std::FILE* out) {
  base::reader in(file);
  if (!in.is_open()) return false;
  // An escape cut by the end of a block keeps its "%" and at most one digit,
  // carried to the front of the next block.
  std::vector<char> bytes(block + 2), text(block + 2);
  std::size_t carry = 0;
  for (;;) {
    std::size_t got = in.read(bytes.data() + carry, block), n = carry + got, used;
    bool last = got < block;
    std::size_t decoded = base::url_decode_block(reinterpret_cast<const unsigned char*>(bytes.data()), n, last,
                                                 false, text.data(), used);
    if (write_to_zero(text.data(), decoded, out) || last) break;
    carry = n - used;
    std::memmove(bytes.data(), bytes.data() + used, carry);
  }
  std::fputc('\n', out);
  return true;
}

// The warning, when the text's length is not a multiple of 4, comes before any
// decoded byte, and the text ends at its first zero byte, so its length is
// known only at its end. A measured file is read twice: once for the length,
// once to decode. A pipe is read once, its decoded bytes held in a spool.
bool unbase64(const std::string& file, std::FILE* out) {
  base::reader in(file);
  if (!in.is_open()) return false;
  std::vector<char> bytes(block), text(block / 4 * 3 + 1);
  auto decode = [&](std::size_t n) {
    return base::unbase64_groups(reinterpret_cast<const unsigned char*>(bytes.data()), n / 4, text.data());
  };
  uint64_t length = 0;
  if (in.measured) {
    while (std::size_t n = in.read(bytes.data(), block)) {
      std::size_t part = text_length(bytes.data(), n);
      length += part;
      if (part < n) break;
    }
    warn_unless_whole_groups(length, out);
    uint64_t left = in.rewind() ? length - length % 4 : 0;
    while (left > 0) {
      std::size_t n = in.read(bytes.data(), left < block ? static_cast<std::size_t>(left) : block);
      if (n == 0 || write_to_zero(text.data(), decode(n), out)) break;
      left -= n;
    }
  } else {
    spool held;
    bool printing = true;  // until a decoded zero byte ends what is printed
    while (std::size_t n = in.read(bytes.data(), block)) {
      std::size_t part = text_length(bytes.data(), n);
      length += part;
      if (printing) {
        std::size_t decoded = decode(part);
        std::size_t shown = text_length(text.data(), decoded);
        held.add(text.data(), shown);
        printing = shown == decoded;
      }
      if (part < n) break;
    }
    warn_unless_whole_groups(length, out);
    held.copy_to(out);
  }
  std::fputc('\n', out);
  return true;
}

}  // namespace streams
