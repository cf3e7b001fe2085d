#include "session/formula.hpp"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <new>

#include "base/file.hpp"
#include "base/text.hpp"
#include "session/editor.hpp"
#include "session/output.hpp"
#include "session/words.hpp"

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

namespace {

// What one run of a file works with, for the whole run.
struct formula_run {
  const std::string& file;
  std::deque<double> arguments;  // for the prompt lines, first come first taken
  vexa::parser& parser;
};

// Each blank-separated word of the argument text, evaluated; a word that does not
// evaluate gives its strtod value, silently.
std::deque<double> argument_values(const std::string& args, vexa::parser& parser) {
  std::deque<double> arguments;
  for (size_t i = 0; i < args.size();) {
    size_t end = args.find(' ', i);
    if (end == std::string::npos) end = args.size();
    if (end > i) {
      std::string word = args.substr(i, end - i);
      double value;
      if (!parser.parse(word, value)) {
        // Out of memory leaves the argument's value unknown, not that of its text.
        if (parser.error == vexa::out_of_memory) throw std::bad_alloc();
        value = std::strtod(word.c_str(), nullptr);
      }
      arguments.push_back(value);
    }
    i = end + 1;
  }
  return arguments;
}

// A print line's text with its references put in: "&name" puts in a value; a
// reference runs to the next blank, and one that fails to evaluate stays in the
// text as written. False when a reference ran out of memory: printed with that
// reference as written, the line would look right.
bool with_values(const std::string& operand, vexa::parser& parser, std::string& out) {
  double value;
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
    } else if (parser.error == vexa::out_of_memory) {
      return false;
    } else {
      out += operand[i++];
    }
  }
  return true;
}

// An expression of line `number` that failed: the parser's message, then the run goes on.
void report_error(const formula_run& run, unsigned number) {
  std::printf("%s, line %d: %s\n", run.file.c_str(), static_cast<int>(number), run.parser.error.c_str());
}

// One line of the file: skipped when blank or a comment, else a prompt, show or
// print line by its first word, or an expression.
void run_formula_line(formula_run& run, const std::string& text, unsigned number) {
  std::string line = base::trim(text);
  if (line.empty() || line[0] == '#') return;
  auto [keyword, operand] = cut_at_first_blank(line);
  vexa::parser& parser = run.parser;
  double value;
  if (keyword == "prompt") {
    if (!run.arguments.empty()) {
      value = run.arguments.front();
      run.arguments.pop_front();
    } else {
      value = std::strtod(read_line(operand + " = ? ").c_str(), nullptr);
    }
    vexa::bind_variable(parser.ctx, operand, value);
  } else if (keyword == "show") {
    if (parser.parse(operand, value)) std::printf("%s = %g\n", operand.c_str(), value);
    else report_error(run, number);
  } else if (keyword == "print") {
    std::string out;
    if (with_values(operand, parser, out)) std::puts(out.c_str());
    else report_error(run, number);
  } else if (!parser.parse(line, value)) {
    report_error(run, number);
  }
}

}  // namespace

bool run_formula(const std::string& file, std::string args, vexa::parser& parser) {
  // Opened once, before anything else happens: a FIFO's writer meets one reader.
  int fd = base::open_read(file);
  if (fd < 0) return false;
  // Closed however the run ends: running out of memory ends it with an exception.
  struct closer {
    int fd;
    ~closer() { close(fd); }
  } closing{fd};
  formula_run run{file, argument_values(args, parser), parser};
  // The third argument, the line's offset in the file, is not needed here.
  base::for_each_line_of(fd, [&](const std::string& text, unsigned number, uint64_t) {
    // Output that can no longer be written ends the file as it ends the session.
    if (output::failed()) return false;
    run_formula_line(run, text, number);
    return true;
  });
  return true;
}
