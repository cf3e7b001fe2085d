#include "session/dispatch.hpp"

#include <cstdio>
#include <cstdlib>

#include "base/text.hpp"
#include "session/bench.hpp"
#include "session/commands.hpp"
#include "session/formula.hpp"
#include "session/words.hpp"
#include "vexa/parser.hpp"

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

struct command {
  const char* name;
  bool whole_line;  // the whole line must be the name; otherwise its first word
  void (*run)(const std::string& args, vexa::parser& parser);
};

// The commands after the formula files, in the order they are tested: the first
// that matches decides.
static const command commands_table[] = {
    {"hex", false, commands::hex},
    {"unhex", false, commands::unhex},
    {"md5", false, commands::md5},
    {"sha1", false, commands::sha1},
    {"sha256", false, commands::sha256},
    {"escape", false, commands::escape},
    {"base64", false, commands::base64},
    {"unbase64", false, commands::unbase64},
    {"url_decode", false, commands::url_decode},
    {"url_encode", false, commands::url_encode},
    {"comma", false, commands::comma},
    {"localtime", false, commands::localtime},
    {"gmtime", false, commands::gmtime},
    {"uuid", true, commands::uuid},
    {"bench", true, [](const std::string&, vexa::parser&) { bench(); }},
    {"verify", false, [](const std::string& args, vexa::parser&) { verify(args); }},
};

bool run_line(const std::string& line) {
  static vexa::parser parser;
  auto [word, args] = cut_at_first_blank(line);

  if (line.empty()) return true;
  if (line == "quit" || line == "exit") {
    std::puts("Bye!");
    return false;
  }
  if (line == "clear") {
    std::fflush(stdout);  // keep earlier output ahead of the shell's
    int ignored = std::system("clear");
    (void)ignored;
    return true;
  }
  if (line == "debug on" || line == "debug off") {
    parser.debug = line == "debug on";
    return true;
  }
  if (line == "reset") {
    parser.ctx.reset();
    return true;
  }
  if (line == "help") {
    print_help(parser.ctx);
    return true;
  }
  if (line == "formula") {
    std::printf("%s", formula_help);
    return true;
  }
  // A word that names a formula file is never a command or an expression, even
  // when the file is missing.
  if (is_formula_name(word)) {
    if (!run_formula(word, args, parser)) std::printf("File not found: %s\n", word.c_str());
    return true;
  }
  for (const command& c : commands_table) {
    if ((c.whole_line ? line : word) == c.name) {
      c.run(args, parser);
      return true;
    }
  }
  double value;
  if (parser.parse(line, value)) std::printf("ans = %s\n", base::num(value).c_str());
  else std::puts(parser.error.c_str());
  return true;
}
