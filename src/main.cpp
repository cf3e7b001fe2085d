// vexa: the session loop, the command dispatcher, the line editor and the formula
// runner. This is the program's one compiled source; the engine, the helpers and
// the calendar are headers.
//
// Escape sequences the line editor writes:
//   ESC 7        save the cursor position (where the prompt begins)
//   ESC 8        restore it
//   ESC [ n B    cursor down n lines
//   ESC [ n C    cursor right n columns
//   CR ESC [ n C carriage return, then right n columns (when the width is unknown)
//   ESC [ 2 J    erase the screen
//   ESC [ H      cursor home
#include <signal.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <string>
#include <vector>

#include "base/base64.hpp"
#include "base/digest.hpp"
#include "base/file.hpp"
#include "base/random.hpp"
#include "base/text.hpp"
#include "base/url.hpp"
#include "calendar/calendar.hpp"
#include "vexa/parser.hpp"

const char* formula_help =
    "\n"
    "Formula files are files with the extension \".frm\" and are in the same directory\n"
    "in which you are running vexa. They generally consist of several lines of \n"
    "mathematical expressions, except they can contain several special lines, based\n"
    "on what the line begins with:\n"
    "\n"
    "    #                 - Comments. The line is ignored.\n"
    "\n"
    "    prompt [variable] - The evaluation of the formula stops to receive\n"
    "                        a number from standard input, which is then\n"
    "                        stored in [variable].\n"
    "\n"
    "    show [variable]   - Prints a line like \"[variable] = [value]\".\n"
    "\n"
    "    print [text]      - Prints [text]. Variables may be included within\n"
    "                        [text] by escaping them with the an ampersand ('&').\n"
    "                        For example:\n"
    "\n"
    "                            print x = &x \n"
    "\n"
    "                        is equivalent to: \n"
    "\n"
    "                            show x \n"
    "\n"
    "Formula files can be run by simply specifying the filename.\n"
    "For example:\n"
    "\n"
    "    pythagoras.frm\n"
    "\n"
    "will look for a file called pythagoras.frm in the same directory, and run it.\n"
    "\n"
    "Formula files can also take arguments which bind to \"prompt\" statements\n"
    "within the file itself. This allows you to run a formula and fill in the\n"
    "prompts in a concise way.\n"
    "For example, assuming that \"pythagoras.frm\" looks like:\n"
    "\n"
    "    prompt a\n"
    "    prompt b\n"
    "    c = sqrt(a^2+b^2)\n"
    "    show c\n"
    "\n"
    "Running this:\n"
    "\n"
    "    pythagoras.frm 1 2\n"
    "\n"
    "will allow you to skip the prompts and assign 1 to a and 2 to b.\n"
    "Any missing arguments are still prompted. Any extra arguments are ignored.\n"
    "\n";

// ---------------------------------------------------------------------------
// Line editor

// One call's editing state. `escape` holds the bytes of an escape sequence that
// is still being read.
struct line_editor {
  std::string line;
  long cursor = 0;
  size_t index = 0;  // into the history; 0 is the empty entry
  std::string escape;
};

enum class key_action { pending, redraw, enter, interrupt, suspend, clear_screen };

// Applies one input byte to the editor; no input or output happens here, so the
// key handling can be driven by plain byte strings.
inline key_action edit_key(line_editor& e, unsigned char c,
                           const std::vector<std::string>& history) {
  auto recall = [&](size_t index) {
    e.index = index;
    e.line = history.empty() ? std::string() : history[index];
    e.cursor = static_cast<long>(e.line.size());
  };
  size_t count = history.size();
  key_action action = key_action::redraw;
  if (e.escape == "\x1b") {
    e.escape.clear();
    if (c == 27) e.line.clear();
    else if (c == '[') e.escape = "\x1b[";
    // any other byte after Escape is consumed and ignored
  } else if (e.escape == "\x1b[") {
    e.escape.clear();
    switch (c) {
      case 'A': if (count) recall((e.index + count - 1) % count); break;
      case 'B': if (count) recall((e.index + 1) % count); break;
      case 'C': ++e.cursor; break;
      case 'D': --e.cursor; break;
      case 'H': e.cursor = 0; break;
      case 'F': e.cursor = static_cast<long>(e.line.size()); break;
      case '3': e.escape = "\x1b[3"; break;
      default: break;
    }
  } else if (e.escape == "\x1b[3") {
    e.escape.clear();
    if (c == '~' && e.cursor < static_cast<long>(e.line.size()))
      e.line.erase(static_cast<size_t>(e.cursor), 1);
  } else {
    switch (c) {
      case 1: e.cursor = 0; break;
      case 3: action = key_action::interrupt; break;
      case 5: e.cursor = static_cast<long>(e.line.size()); break;
      case 10: case 13: return key_action::enter;
      case 12: action = key_action::clear_screen; break;
      case 26: action = key_action::suspend; break;
      case 27: e.escape = "\x1b"; break;
      case 127:
        if (e.cursor > 0) e.line.erase(static_cast<size_t>(--e.cursor), 1);
        break;
      default:
        e.line.insert(static_cast<size_t>(e.cursor), 1, static_cast<char>(c));
        ++e.cursor;
    }
  }
  if (!e.escape.empty()) return key_action::pending;
  if (e.cursor < 0) e.cursor = 0;
  if (e.cursor > static_cast<long>(e.line.size())) e.cursor = static_cast<long>(e.line.size());
  return action;
}

std::string read_line_lazy(const std::string& prompt) {
  std::printf("%s", prompt.c_str());
  std::fflush(stdout);
  std::string line;
  while (!std::feof(stdin) && !std::ferror(stdin)) {
    int c = std::fgetc(stdin);
    if (c == '\r') continue;
    if (c == EOF || c == '\n') break;
    line += static_cast<char>(c);
  }
  return line;
}

// Set when the terminal delivers no more bytes (it hung up), so that the session
// ends as it does at the end of piped input.
bool terminal_ended = false;

// Every way out of editing mode restores `saved`: Enter, the end of the
// terminal's input, and the signal keys, whose default actions must find the
// terminal as the user left it.
std::string read_line(const std::string& prompt) {
  if (!isatty(0)) return read_line_lazy(prompt);
  static std::vector<std::string> history;
  if (history.empty()) history.push_back(std::string());

  std::printf("\x1b" "7%s", prompt.c_str());
  std::fflush(stdout);
  termios saved, editing;
  bool have_saved = tcgetattr(0, &saved) == 0;
  std::memset(&editing, 0, sizeof editing);
  editing.c_cflag = CS8;
  editing.c_cc[VMIN] = 1;
  tcsetattr(0, TCSANOW, &editing);
  auto restore = [&] {
    if (have_saved) tcsetattr(0, TCSANOW, &saved);
  };

  line_editor e;
  int width = 0;
  for (;;) {
    unsigned char c;
    ssize_t got = read(0, &c, 1);
    if (got < 0 && errno == EINTR) continue;
    key_action action = got == 1 ? edit_key(e, c, history) : key_action::enter;
    if (got != 1) terminal_ended = true;
    if (action == key_action::pending) continue;
    if (action == key_action::enter) break;
    if (action == key_action::interrupt || action == key_action::suspend) {
      restore();
      raise(action == key_action::interrupt ? SIGINT : SIGTSTP);
      tcsetattr(0, TCSANOW, &editing);
    } else if (action == key_action::clear_screen) {
      std::printf("\x1b[2J\x1b[H\x1b" "7");
    }
    std::printf("\x1b" "8");
    int printed = std::printf("%s%s", prompt.c_str(), e.line.c_str());
    if (width > printed) std::printf("%*s", width - printed, "");
    winsize ws;
    int columns = ioctl(1, TIOCGWINSZ, &ws) == 0 ? ws.ws_col : 0;
    long p = static_cast<long>(prompt.size()) + e.cursor;
    if (columns == 0) {
      std::printf("\r\x1b[%ldC", p);
    } else {
      std::printf("\x1b" "8");
      if (p / columns) std::printf("\x1b[%ldB", p / columns);
      if (p % columns) std::printf("\x1b[%ldC", p % columns);
    }
    std::fflush(stdout);
    width = printed;
  }

  std::printf("\x1b" "8%s%s", prompt.c_str(), e.line.c_str());
  restore();
  std::putchar('\n');
  std::fflush(stdout);
  if (!e.line.empty() && e.line != history.back()) history.push_back(e.line);
  return e.line;
}

// ---------------------------------------------------------------------------
// Formula files

void run_formula(const std::string& file, std::string args, vexa::parser& parser) {
  std::deque<double> arguments;
  for (size_t i = 0; i < args.size();) {
    size_t end = args.find(' ', i);
    if (end == std::string::npos) end = args.size();
    if (end > i) {
      std::string word = args.substr(i, end - i);
      double value;
      if (!parser.parse(word, value)) value = std::strtod(word.c_str(), nullptr);
      arguments.push_back(value);
    }
    i = end + 1;
  }

  // The third argument, the line's offset in the file, is not needed here.
  base::for_each_line(file, [&](const std::string& text, unsigned number, unsigned) {
    std::string line = base::trim(text);
    if (line.empty() || line[0] == '#') return;
    size_t blank = line.find(' ');
    std::string keyword = line.substr(0, blank);
    std::string operand = blank == std::string::npos ? std::string() : line.substr(blank + 1);
    auto report = [&] {
      std::printf("%s, line %d: %s\n", file.c_str(), static_cast<int>(number),
                  parser.error.c_str());
    };
    double value;
    if (keyword == "prompt") {
      if (!arguments.empty()) {
        value = arguments.front();
        arguments.pop_front();
      } else {
        value = std::strtod(read_line(operand + " = ? ").c_str(), nullptr);
      }
      vexa::bind_variable(parser.ctx, operand, value);
    } else if (keyword == "show") {
      if (parser.parse(operand, value)) std::printf("%s = %g\n", operand.c_str(), value);
      else report();
    } else if (keyword == "print") {
      // "&name" puts in a value; a reference runs to the next blank, and one that
      // fails to evaluate stays in the text as written.
      std::string out;
      for (size_t i = 0; i < operand.size();) {
        if (operand[i] != '&') {
          out += operand[i++];
          continue;
        }
        size_t end = operand.find(' ', i + 1);
        if (end == std::string::npos) end = operand.size();
        if (parser.parse(operand.substr(i + 1, end - i - 1), value)) {
          out += base::num(value);
          i = end;
        } else {
          out += operand[i++];
        }
      }
      std::puts(out.c_str());
    } else if (!parser.parse(line, value)) {
      report();
    }
  });
}

// ---------------------------------------------------------------------------
// Utility commands

// strtol's reading of the text, limited to 32 bits as the commands print it.
static int to_int32_text(const std::string& text, int base) {
  long n = std::strtol(text.c_str(), nullptr, base);
  return n > INT_MAX ? INT_MAX : n < INT_MIN ? INT_MIN : static_cast<int>(n);
}

static std::string escape_c(const std::string& bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (char ch : bytes) {
    unsigned char c = static_cast<unsigned char>(ch);
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\b': out += "\\b"; break;
      case '\f': out += "\\f"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      case 0: out += "\\0"; break;
      default:
        if (c >= 32 && c <= 126) out += ch;
        else out += "\\x" + base::hex(std::string(1, ch));
    }
  }
  return out;
}

// The argument names a file if one exists by that name; otherwise it is the text.
static std::string file_or_text(const std::string& args) {
  return base::exists(args) ? base::load(args) : args;
}

// A variable's value when the text names one.
static bool lookup(const vexa::context& ctx, const std::string& name, double& value) {
  vexa::context::const_iterator found = ctx.find(name);
  if (found == ctx.end()) return false;
  value = found->second->value;
  return true;
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

// ---------------------------------------------------------------------------
// Hash benchmark

static std::string chain_step(const std::string& s) { return base::hex(base::sha256(s)); }

static void bench() {
  std::string s = base::randstr(64);
  std::puts(s.c_str());
  std::fflush(stdout);
  double start = static_cast<double>(std::time(nullptr)), now = 0.0;
  int count = 0;
  // Steps within the starting second are not counted: the count then covers
  // whole seconds only, from the first change of the clock on.
  while (now - start < 10.0) {
    s = chain_step(s);
    now = static_cast<double>(std::time(nullptr));
    if (now > start) ++count;
  }
  int rate = static_cast<int>(count / ((now - start) - 1.0));
  std::puts(s.c_str());
  std::printf("%s hashes per second\n", base::comma(base::num(rate)).c_str());
}

static bool is_chain_string(const std::string& s) {
  return s.size() == 64 && s.find_first_not_of("0123456789abcdef") == std::string::npos;
}

// Recomputes the chain from the start string to the end string. Every string a
// chain reaches is 64 lowercase hex digits, so any other end string is refused at
// once; a well-formed one that is never reached ends the search when the 32-bit
// count runs out.
static void verify(const std::string& args, int limit = INT_MAX) {
  std::string a = args.size() == 129 ? args.substr(0, 64) : std::string();
  std::string b = args.size() == 129 ? args.substr(65) : std::string();
  if (args.size() != 129 || args[64] != ':' || (a != b && !is_chain_string(b))) {
    std::puts("Invalid benchmark string.");
    return;
  }
  double start = static_cast<double>(std::time(nullptr));
  int count = 0;
  while (a != b && count < limit) {
    a = chain_step(a);
    ++count;
  }
  int elapsed = static_cast<int>(static_cast<double>(std::time(nullptr)) - start);
  // Within one second of the clock the count itself is the best rate to show.
  int rate = elapsed > 0 ? count / elapsed : count;
  std::printf("%s after %s hashes in ~%s seconds.\n", a == b ? "Found" : "Not found",
              base::comma(base::num(count)).c_str(), base::num(elapsed).c_str());
  std::printf("~%s hashes per second\n", base::comma(base::num(rate)).c_str());
}

// ---------------------------------------------------------------------------
// Session

static void print_help(const vexa::context& ctx) {
  std::putchar('\n');
  std::puts(
      "COMMANDS: these must be typed exactly with no leading or trailing characters\n\n"
      "\thelp       - shows this message\n"
      "\tdebug on   - turns debug on\n"
      "\tdebug off  - turns debug off\n"
      "\texit       - exits the program\n"
      "\tquit       - exits the program\n"
      "\tclear      - clears the screen\n"
      "\treset      - reset all variables\n"
      "\t*.frm      - run a formula file\n"
      "\tformula    - view help text about formula files\n"
      "\thex [n]    - convert n to hex\n"
      "\tunhex [n]  - convert n to decimal\n"
      "\tmd5|sha1|sha256 [file] - compute the hex digest for a file\n"
      "\tescape [file] - C-string escape a file\n"
      "\tbase64|unbase64 [file|string] - base64 encode/decode a file or string\n"
      "\turl_encode|url_decode [file|string] -url encode/decode a file or string\n"
      "\tcomma [n]  - add commas to a number\n"
      "\ttime       - get seconds since unix epoch\n"
      "\tlocaltime [t] -format time to local time string\n"
      "\tgmtime [t] -format time to UTC time string\n"
      "\tuuid       - generate a UUID\n"
      "\tbench      - run a simple benchmark\n");
  std::puts("FUNCTIONS: these all take a single parameter\n");
  int printed = 0;
  for (const auto& entry : ctx) {
    if (!entry.second->function) continue;
    std::printf("\t%s()", entry.first.c_str());
    if (++printed % 3 == 0) std::putchar('\n');
  }
  if (printed % 3 != 0) std::putchar('\n');
  std::putchar('\n');
  std::printf("OPERATORS: in order of precedence\n\n\t!\n\t^\n\t* / %%\n\t+ -\n\t=\n\n");
  std::puts("The factorial operator (!) takes two operands and a!b is equivalent to a!/b! in "
            "traditional notation.");
  std::puts("Also, the variables 'pi', 'e', and 'ans' are pre-defined.");
  std::puts("The variable 'ans' always corresponds to the last answer.");
  std::putchar('\n');
}

// "*.frm", with only the ASCII letters compared without regard to case.
static bool is_formula_name(const std::string& word) {
  static const char suffix[] = ".frm";
  if (word.size() < 4) return false;
  for (size_t i = 0; i < 4; ++i) {
    char c = word[word.size() - 4 + i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c != suffix[i]) return false;
  }
  return true;
}

bool run_line(const std::string& line) {
  static vexa::parser parser;
  size_t blank = line.find(' ');
  std::string word = line.substr(0, blank);
  std::string args = blank == std::string::npos ? std::string() : line.substr(blank + 1);

  if (line.empty()) return true;
  if (line == "quit" || line == "exit") {
    std::puts("Bye!");
    return false;
  }
  if (line == "clear") {
    std::fflush(stdout);  // keep earlier output ahead of the shell's
    int ignored = std::system("clear");
    (void)ignored;
  } else if (line == "debug on") {
    parser.debug = true;
  } else if (line == "debug off") {
    parser.debug = false;
  } else if (line == "reset") {
    parser.ctx.reset();
  } else if (line == "help") {
    print_help(parser.ctx);
  } else if (line == "formula") {
    std::printf("%s", formula_help);
  } else if (is_formula_name(word)) {
    if (base::exists(word)) run_formula(word, args, parser);
    else std::printf("File not found: %s\n", word.c_str());
  } else if (word == "hex") {
    std::printf("%x\n", static_cast<unsigned>(to_int32_text(args, 10)));
  } else if (word == "unhex") {
    std::printf("%d\n", to_int32_text(args, 16));
  } else if (word == "md5") {
    std::puts(base::hex(base::md5(base::load(args))).c_str());
  } else if (word == "sha1") {
    std::puts(base::hex(base::sha1(base::load(args))).c_str());
  } else if (word == "sha256") {
    std::puts(base::hex(base::sha256(base::load(args))).c_str());
  } else if (word == "escape") {
    std::puts(escape_c(base::load(args)).c_str());
  } else if (word == "base64") {
    std::puts(base::base64(file_or_text(args)).c_str());
  } else if (word == "unbase64") {
    std::puts(base::unbase64(file_or_text(args)).c_str());
  } else if (word == "url_decode") {
    std::puts(base::url_decode(file_or_text(args), false).c_str());
  } else if (word == "url_encode") {
    std::puts(base::url_encode(file_or_text(args), false).c_str());
  } else if (word == "comma") {
    std::string text = args.empty() ? std::string("ans") : args;
    double value;
    if (lookup(parser.ctx, text, value)) text = base::num(value);
    std::puts(base::comma(text).c_str());
  } else if (word == "localtime" || word == "gmtime") {
    print_time(parser.ctx, args, word == "localtime");
  } else if (line == "uuid") {
    std::puts(base::uuid(nullptr).c_str());
  } else if (line == "bench") {
    bench();
  } else if (word == "verify") {
    verify(args);
  } else {
    double value;
    if (parser.parse(line, value)) std::printf("ans = %s\n", base::num(value).c_str());
    else std::puts(parser.error.c_str());
  }
  return true;
}

#ifndef VEXA_NO_MAIN
int main(int argc, char** argv) {
  if (argc > 1) {
    std::string line = argv[1];
    for (int i = 2; i < argc; ++i) line += std::string(" ") + argv[i];
    run_line(line);
    return 0;
  }
  std::puts("Type 'help' for help.\n");
  // An input that cannot be read (a directory, a closed descriptor) sets the
  // error indicator rather than end of file; it ends the session all the same.
  while (!std::feof(stdin) && !std::ferror(stdin) && !terminal_ended)
    if (!run_line(read_line("> "))) break;
  return 0;
}
#endif
