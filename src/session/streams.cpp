#include "session/streams.hpp"

#include <signal.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/base64.hpp"
#include "base/digest.hpp"
#include "base/escape.hpp"
#include "base/file.hpp"
#include "base/text.hpp"
#include "base/url.hpp"
#include "session/output.hpp"

namespace streams {

namespace {

const std::size_t block = base::block_size;

// Every byte the file commands print goes out here, a block at a time. A write
// that fails (a closed pipe, a full disk) ends the command: nothing more of it
// could reach its reader.
bool put(const char* p, std::size_t n, std::FILE* out) { return std::fwrite(p, 1, n, out) == n; }

// The length of the text, which ends at its first zero byte, of the next n bytes.
std::size_t text_length(const char* p, std::size_t n) {
  const char* zero = static_cast<const char*>(std::memchr(p, 0, n));
  return zero ? static_cast<std::size_t>(zero - p) : n;
}

template <class Context>
void digest(const std::string& file, std::FILE* out) {
  base::reader in(file);
  base::block_buffer bytes(block);
  Context context;
  while (std::size_t n = in.read(bytes.data, block)) context.add(bytes.data, n);
  std::fprintf(out, "%s\n", base::hex(context.finish()).c_str());
}

// Reads the file to its end and writes encode(block, n, text) of each block,
// then the line feed. The encoders never produce a zero byte.
template <class Encode>
void encode_file(base::reader& in, std::FILE* out, std::size_t growth, Encode encode) {
  base::block_buffer bytes(block), text(growth * block);
  while (std::size_t n = in.read(bytes.data, block)) {
    std::size_t size = encode(reinterpret_cast<const unsigned char*>(bytes.data), n, text.data);
    if (!put(text.data, size, out)) return;
  }
  std::fputc('\n', out);
}

// Sends the first n bytes of the file `from` to the descriptor `to` inside the
// kernel, without a copy through vexa's memory, and returns how many went: all
// of them unless the kernel cannot send between these two (or a write fails).
uint64_t send_in_kernel(int from, int to, uint64_t n) {
  off_t at = 0;
  while (to >= 0 && static_cast<uint64_t>(at) < n) {
    // At most this much a call, as Linux allows.
    const uint64_t most = 0x7ffff000, left = n - static_cast<uint64_t>(at);
    std::size_t want = static_cast<std::size_t>(left < most ? left : most);
    ssize_t sent = sendfile(to, from, &at, want);
    if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) base::wait_until_ready(to, POLLOUT);
    else if (sent <= 0 && !(sent < 0 && errno == EINTR)) break;
  }
  return static_cast<uint64_t>(at);
}

// Bytes held back until they may be printed: in memory up to a block, beyond
// that in a temporary file. Every write to the file is checked; from the first
// that fails (no space, a size limit, no temporary folder at all) the rest stays
// in memory, so what is printed is complete either way. The file's bytes always
// come before the memory's.
class spool {
 public:
  spool() = default;
  spool(const spool&) = delete;
  spool& operator=(const spool&) = delete;
  ~spool() {
    if (file) std::fclose(file);
  }

  void add(const char* p, std::size_t n) {
    if (!tried && held.size() + n > block) {
      tried = true;
      // Past a size limit a write then fails with EFBIG instead of ending vexa.
      signal(SIGXFSZ, SIG_IGN);
      file = std::tmpfile();
      appending = file != nullptr;
      std::string first;
      first.swap(held);
      append(first.data(), first.size());
    }
    append(p, n);
  }

  // Prints the file's part, then the memory's; false once printing fails. A file
  // that cannot be read back ends the bytes there, as a short read of the input
  // would, and nothing after the gap is printed.
  bool copy_to(std::FILE* out) {
    uint64_t sent = 0;
    if (written > 0 && std::fflush(out) == 0) sent = send_in_kernel(fileno(file), output::descriptor_of(out), written);
    // Where the kernel refused (or a write failed, which the same write through
    // stdio then reports), the rest goes the plain way.
    if (sent < written) {
      base::block_buffer bytes(block);
      for (uint64_t at = sent; at < written;) {
        std::size_t want = written - at < block ? static_cast<std::size_t>(written - at) : block;
        ssize_t got = pread(fileno(file), bytes.data, want, static_cast<off_t>(at));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return true;
        if (!put(bytes.data, static_cast<std::size_t>(got), out)) return false;
        at += static_cast<uint64_t>(got);
      }
    }
    return put(held.data(), held.size(), out);
  }

 private:
  std::string held;
  std::FILE* file = nullptr;
  uint64_t written = 0;    // bytes in the file
  bool tried = false;      // whether a file was opened or tried
  bool appending = false;  // whether new bytes still go to the file

  void append(const char* p, std::size_t n) {
    while (appending && n > 0) {
      ssize_t wrote = ::write(fileno(file), p, n);
      if (wrote < 0 && errno == EINTR) continue;
      if (wrote <= 0) appending = false;
      else p += wrote, n -= static_cast<std::size_t>(wrote), written += static_cast<uint64_t>(wrote);
    }
    held.append(p, n);
  }
};

void warn_unless_whole_groups(uint64_t length, std::FILE* out) {
  if (length % 4 != 0) std::fprintf(out, "%s\n", base::base64_length_warning);
}

}  // namespace

void md5(const std::string& file, std::FILE* out) { digest<base::md5_context>(file, out); }
void sha1(const std::string& file, std::FILE* out) { digest<base::sha1_context>(file, out); }
void sha256(const std::string& file, std::FILE* out) { digest<base::sha256_context>(file, out); }

void escape(const std::string& file, std::FILE* out) {
  base::reader in(file);
  encode_file(in, out, 4, base::c_escape_block);
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
  base::block_buffer bytes(block), text(block);
  // An escape cut by the end of a block leaves its "%" and at most one digit,
  // kept apart and completed by the first bytes of the next block, so that every
  // read still lands on the start of the aligned block.
  char carry[2];
  std::size_t carried = 0;
  for (;;) {
    std::size_t n = in.read(bytes.data, block), skip = 0, decoded = 0, used;
    bool last = n < block;
    if (carried > 0) {
      skip = std::min(n, 3 - carried);
      unsigned char escape[3];
      std::memcpy(escape, carry, carried);
      std::memcpy(escape + carried, bytes.data, skip);
      // Too few bytes follow only at the very end, where the cut escape stays as written.
      if (carried + skip < 3) skip = 0;
      decoded = base::url_decode_block(escape, carried + skip, true, false, text.data, used);
    }
    decoded += base::url_decode_block(reinterpret_cast<const unsigned char*>(bytes.data) + skip, n - skip, last,
                                      false, text.data + decoded, used);
    std::size_t shown = text_length(text.data, decoded);
    if (!put(text.data, shown, out)) return true;
    if (shown < decoded || last) break;
    carried = n - skip - used;
    std::memcpy(carry, bytes.data + skip + used, carried);
  }
  std::fputc('\n', out);
  return true;
}

// The warning, when the text's length is not a multiple of 4, comes before any
// decoded byte, and the text ends at its first zero byte, so its length is
// known only at its end. The input is read once, its decoded bytes held in a
// spool until then: a second pass could meet a file that has changed.
bool unbase64(const std::string& file, std::FILE* out) {
  base::reader in(file);
  if (!in.is_open()) return false;
  base::block_buffer bytes(block), text(block / 4 * 3 + 1);
  spool held;
  uint64_t length = 0;
  bool printing = true;  // until a decoded zero byte ends what is printed
  while (std::size_t n = in.read(bytes.data, block)) {
    std::size_t part = text_length(bytes.data, n);
    length += part;
    if (printing) {
      std::size_t decoded =
          base::unbase64_groups(reinterpret_cast<const unsigned char*>(bytes.data), part / 4, text.data);
      std::size_t shown = text_length(text.data, decoded);
      held.add(text.data, shown);
      printing = shown == decoded;
    }
    if (part < n) break;
  }
  warn_unless_whole_groups(length, out);
  if (held.copy_to(out)) std::fputc('\n', out);
  return true;
}

}  // namespace streams
