#include "session/commands.hpp"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "base/base64.hpp"
#include "base/random.hpp"
#include "base/text.hpp"
#include "base/url.hpp"
#include "calendar/calendar.hpp"
#include "session/streams.hpp"

namespace commands {

// strtol's reading of the text, limited to 32 bits as the commands print it.
static int to_int32_text(const std::string& text, int base) {
  return vexa::to_int32(static_cast<double>(std::strtol(text.c_str(), nullptr, base)));
}

void hex(const std::string& args, vexa::parser&) {
  std::printf("%x\n", static_cast<unsigned>(to_int32_text(args, 10)));
}

void unhex(const std::string& args, vexa::parser&) {
  std::printf("%d\n", to_int32_text(args, 16));
}

// The file commands read their file in blocks; the coders fall back to the
// argument as text when no file of that name can be opened.
void md5(const std::string& args, vexa::parser&) { streams::md5(args, stdout); }

void sha1(const std::string& args, vexa::parser&) { streams::sha1(args, stdout); }

void sha256(const std::string& args, vexa::parser&) { streams::sha256(args, stdout); }

void escape(const std::string& args, vexa::parser&) { streams::escape(args, stdout); }

void base64(const std::string& args, vexa::parser&) {
  if (!streams::base64(args, stdout)) std::puts(base::base64(args).c_str());
}

void unbase64(const std::string& args, vexa::parser&) {
  if (!streams::unbase64(args, stdout)) std::puts(base::unbase64(args).c_str());
}

void url_decode(const std::string& args, vexa::parser&) {
  if (!streams::url_decode(args, stdout)) std::puts(base::url_decode(args, false).c_str());
}

void url_encode(const std::string& args, vexa::parser&) {
  if (!streams::url_encode(args, stdout)) std::puts(base::url_encode(args, false).c_str());
}

// A variable's value when the text names one.
static bool lookup(const vexa::context& ctx, const std::string& name, double& value) {
  vexa::context::const_iterator found = ctx.find(name);
  if (found == ctx.end()) return false;
  value = found->second->value;
  return true;
}

void comma(const std::string& args, vexa::parser& parser) {
  std::string text = args.empty() ? std::string("ans") : args;
  double value;
  if (lookup(parser.ctx, text, value)) text = base::num(value);
  std::puts(base::comma(text).c_str());
}

static void print_time(const vexa::context& ctx, const std::string& args, bool local) {
  double t;
  if (args.empty()) t = static_cast<double>(std::time(nullptr));
  else if (!lookup(ctx, args, t)) t = std::strtod(args.c_str(), nullptr);
  if (local) {
    // The zone's offset at the epoch, plus an hour where daylight saving is in
    // force at t.
    std::time_t zero = 0;
    std::tm* broken = std::gmtime(&zero);
    double offset = broken ? std::trunc(std::difftime(0, std::mktime(broken))) : 0;
    std::time_t whole = vexa::to_int32(t);
    std::tm* at = std::localtime(&whole);
    if (at && at->tm_isdst != 0) offset += 3600;
    t += offset;
  }
  std::puts(calendar{t}.format("%Y-%m-%d %I:%M:%S %p %a", 0).c_str());
}

void localtime(const std::string& args, vexa::parser& parser) { print_time(parser.ctx, args, true); }

void gmtime(const std::string& args, vexa::parser& parser) { print_time(parser.ctx, args, false); }

void uuid(const std::string&, vexa::parser&) { std::puts(base::uuid(nullptr).c_str()); }

}  // namespace commands
