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

key_action edit_key(line_editor& e, unsigned char c, const std::vector<std::string>& history) {
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

// Set when the terminal delivers no more bytes, so that the session ends as it
// does at the end of piped input.
static bool ended = false;

bool terminal_ended() { return ended; }

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
    if (got != 1) ended = true;
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
