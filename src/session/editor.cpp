// Escape sequences the line editor writes:
//   ESC 7        save the cursor position (where the prompt begins)
//   ESC 8        restore it
//   ESC [ n B    cursor down n lines
//   ESC [ n C    cursor right n columns
//   CR ESC [ n C carriage return, then right n columns (when the width is unknown)
//   ESC [ 2 J    erase the screen
//   ESC [ H      cursor home
#include "session/editor.hpp"

#include <signal.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <new>

#include "base/file.hpp"

// The control bytes the editor acts on.
enum control_byte : unsigned char {
  ctrl_a = 1,       // Home
  ctrl_c = 3,       // interrupt
  ctrl_e = 5,       // End
  line_feed = 10,   // Enter, as is carriage_return
  ctrl_l = 12,      // clear the screen
  carriage_return = 13,
  ctrl_z = 26,      // suspend
  escape_byte = 27,
  backspace = 127,
};

key_action edit_key(line_editor& e, unsigned char c, const std::vector<std::string>& history) {
  auto recall = [&](std::size_t index) {
    e.index = index;
    e.line = history.empty() ? std::string() : history[index];
    e.cursor = e.line.size();
  };
  std::size_t count = history.size();
  key_action action = key_action::redraw;
  if (e.escape == "\x1b") {
    e.escape.clear();
    if (c == escape_byte) e.line.clear();
    else if (c == '[') e.escape = "\x1b[";
    // any other byte after Escape is consumed and ignored
  } else if (e.escape == "\x1b[") {
    e.escape.clear();
    switch (c) {
      case 'A': if (count) recall((e.index + count - 1) % count); break;
      case 'B': if (count) recall((e.index + 1) % count); break;
      case 'C': ++e.cursor; break;
      case 'D': if (e.cursor > 0) --e.cursor; break;
      case 'H': e.cursor = 0; break;
      case 'F': e.cursor = e.line.size(); break;
      case '3': e.escape = "\x1b[3"; break;
      default: break;
    }
  } else if (e.escape == "\x1b[3") {
    e.escape.clear();
    if (c == '~' && e.cursor < e.line.size()) e.line.erase(e.cursor, 1);
  } else {
    switch (c) {
      case ctrl_a: e.cursor = 0; break;
      case ctrl_c: action = key_action::interrupt; break;
      case ctrl_e: e.cursor = e.line.size(); break;
      case line_feed: case carriage_return: return key_action::enter;
      case ctrl_l: action = key_action::clear_screen; break;
      case ctrl_z: action = key_action::suspend; break;
      case escape_byte: e.escape = "\x1b"; break;
      case backspace:
        if (e.cursor > 0) e.line.erase(--e.cursor, 1);
        break;
      default:
        e.line.insert(e.cursor, 1, static_cast<char>(c));
        ++e.cursor;
    }
  }
  if (!e.escape.empty()) return key_action::pending;
  // Right may have gone past the end, and two Escapes may have emptied the line.
  if (e.cursor > e.line.size()) e.cursor = e.line.size();
  return action;
}

// Input that another program made non-blocking reports EAGAIN when it has no
// byte yet: that means wait, not the end of the input.
static int next_byte() {
  for (;;) {
    int c = std::fgetc(stdin);
    if (c != EOF || !std::ferror(stdin) || (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR))
      return c;
    std::clearerr(stdin);
    if (errno != EINTR) base::wait_until_ready(0, POLLIN);
  }
}

std::string read_line_lazy(const std::string& prompt) {
  std::printf("%s", prompt.c_str());
  std::fflush(stdout);
  std::string line;
  int c;
  try {
    while ((c = next_byte()) != EOF && c != '\n')
      if (c != '\r') line += static_cast<char>(c);
  } catch (const std::bad_alloc&) {
    // The rest of a line too long to hold is passed over, not read as a new line.
    std::string().swap(line);
    while ((c = next_byte()) != EOF && c != '\n') {
    }
    throw;
  }
  return line;
}

// Set when the terminal delivers no more bytes, so that the session ends as it
// does at the end of piped input.
static bool ended = false;

bool terminal_ended() { return ended; }

// The user's terminal settings while the editor holds the terminal, for the
// handlers of the signals that end vexa: they put the settings back first.
static termios saved_settings;
static volatile sig_atomic_t holding_terminal = 0;
static const int ending_signals[] = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};

static void restore_then_end(int signal_number) {
  if (holding_terminal) tcsetattr(0, TCSANOW, &saved_settings);
  signal(signal_number, SIG_DFL);
  raise(signal_number);  // delivered, with its default action, once this returns
}

// Editing mode for one call of read_line. Every way out restores the user's
// settings: Enter, the end of the terminal's input, the signal keys (whose
// default actions must find the terminal as the user left it), a signal from
// elsewhere, and an exception.
struct editing_mode {
  termios editing = {};
  bool have_saved = tcgetattr(0, &saved_settings) == 0;
  struct sigaction previous[std::size(ending_signals)];

  editing_mode() {
    editing.c_cflag = CS8;
    editing.c_cc[VMIN] = 1;
    struct sigaction action = {};
    action.sa_handler = restore_then_end;
    for (std::size_t i = 0; i < std::size(ending_signals); ++i) {
      sigaction(ending_signals[i], nullptr, &previous[i]);
      if (previous[i].sa_handler != SIG_IGN) sigaction(ending_signals[i], &action, nullptr);
    }
    enter();
  }
  ~editing_mode() {
    leave();
    for (std::size_t i = 0; i < std::size(ending_signals); ++i) sigaction(ending_signals[i], &previous[i], nullptr);
  }
  editing_mode(const editing_mode&) = delete;
  editing_mode& operator=(const editing_mode&) = delete;

  void enter() {
    tcsetattr(0, TCSANOW, &editing);
    holding_terminal = have_saved;
  }
  void leave() {
    if (!holding_terminal) return;
    holding_terminal = 0;
    tcsetattr(0, TCSANOW, &saved_settings);
  }
};

// Moves the terminal's cursor to column p counted from the prompt's start, the
// line wrapping at the window's width; CR and a move right when that is unknown.
static void place_cursor(std::size_t p) {
  winsize ws;
  std::size_t columns = ioctl(1, TIOCGWINSZ, &ws) == 0 ? ws.ws_col : 0;
  if (columns == 0) {
    std::printf("\r\x1b[%zuC", p);
    return;
  }
  std::printf("\x1b" "8");
  if (p / columns) std::printf("\x1b[%zuB", p / columns);
  if (p % columns) std::printf("\x1b[%zuC", p % columns);
}

// Prints prompt and line again from the prompt's start, blanks over the rest of
// a longer line printed before (`width` bytes), and the cursor; returns the
// width printed now.
static int redraw(const std::string& prompt, const line_editor& e, int width) {
  std::printf("\x1b" "8");
  int printed = std::printf("%s%s", prompt.c_str(), e.line.c_str());
  if (width > printed) std::printf("%*s", width - printed, "");
  place_cursor(prompt.size() + e.cursor);
  std::fflush(stdout);
  return printed;
}

std::string read_line(const std::string& prompt) {
  if (!isatty(0)) return read_line_lazy(prompt);
  static std::vector<std::string> history;
  if (history.empty()) history.push_back(std::string());

  std::printf("\x1b" "7%s", prompt.c_str());
  std::fflush(stdout);
  editing_mode terminal;

  line_editor e;
  int width = 0;
  for (;;) {
    unsigned char c;
    std::size_t got = base::read_some(0, reinterpret_cast<char*>(&c), 1);
    key_action action = got == 1 ? edit_key(e, c, history) : key_action::enter;
    if (got != 1) ended = true;
    if (action == key_action::pending) continue;
    if (action == key_action::enter) break;
    if (action == key_action::interrupt || action == key_action::suspend) {
      terminal.leave();
      raise(action == key_action::interrupt ? SIGINT : SIGTSTP);
      terminal.enter();
    } else if (action == key_action::clear_screen) {
      std::printf("\x1b[2J\x1b[H\x1b" "7");
    }
    width = redraw(prompt, e, width);
  }

  std::printf("\x1b" "8%s%s", prompt.c_str(), e.line.c_str());
  terminal.leave();
  std::putchar('\n');
  std::fflush(stdout);
  if (!e.line.empty() && e.line != history.back()) history.push_back(e.line);
  return e.line;
}
