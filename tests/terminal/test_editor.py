#!/usr/bin/env python3
"""Line editor tests on a real pseudo-terminal.

vexa runs on a fresh 80x24 pty under a tiny job-control shell (a forked child that
leads the pty's session and gives vexa a foreground process group of its own, so
that Ctrl-Z stops vexa as under a real shell). Keys are written to the master one
key at a time; after each key the bytes vexa writes are read up to the expected
redraw and compared exactly. Timeouts only guard against hangs.

Usage: test_editor.py path/to/vexa
"""
import fcntl
import os
import select
import signal
import struct
import sys
import tempfile
import termios
import time

VEXA = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else "vexa")
GREETING = b"Type 'help' for help.\r\n\r\n\x1b7> "
UP, DOWN, RIGHT, LEFT = b"\x1b[A", b"\x1b[B", b"\x1b[C", b"\x1b[D"
HOME, END, DEL, BS = b"\x1b[H", b"\x1b[F", b"\x1b[3~", b"\x7f"
failures = []


def check(name, expected, actual):
    if expected != actual:
        failures.append(name)
        print("FAIL %s\n  expected %r\n  actual   %r" % (name, expected, actual))
    return expected == actual


def draw(line, cursor, pad=0, prompt=b"> "):
    """The redraw after a key: prompt and line, blanks over a longer earlier line,
    then the cursor placed from the saved position in an 80-column window."""
    p = len(prompt) + cursor
    move = (b"\x1b[%dB" % (p // 80) if p // 80 else b"") + (b"\x1b[%dC" % (p % 80) if p % 80 else b"")
    return b"\x1b8" + prompt + line + b" " * pad + b"\x1b8" + move


def typing(text, before=b""):
    """Steps for typing `text` byte by byte at the end of the line `before`."""
    return [(text[i:i + 1], draw(before + text[:i + 1], len(before) + i + 1)) for i in range(len(text))]


def modes(attrs):
    return [attrs[0], attrs[1], attrs[3]]  # iflag, oflag, lflag


class Vexa:
    def __init__(self, cols=80, stdout_pipe=False):
        self.master, self.slave = os.openpty()
        fcntl.ioctl(self.master, termios.TIOCSWINSZ, struct.pack("HHHH", 24, cols, 0, 0))
        self.initial = termios.tcgetattr(self.slave)
        self.buf, self.done = b"", None
        out_r, out_w = os.pipe() if stdout_pipe else (self.master, None)
        events_r, events_w = os.pipe()
        sys.stdout.flush()
        self.shell = os.fork()
        if self.shell == 0:
            self._shell(events_w, out_w)
        os.close(events_w)
        if out_w is not None:
            os.close(out_w)
        self.out, self.events, self.pending = out_r, events_r, b""
        self.pid = int(self.event().split()[1])

    def _shell(self, events, out_w):
        try:
            os.close(self.master)
            os.setsid()
            fcntl.ioctl(self.slave, termios.TIOCSCTTY, 0)
            signal.signal(signal.SIGHUP, signal.SIG_IGN)  # the shell outlives a hangup
            go_r, go_w = os.pipe()
            pid = os.fork()
            if pid == 0:
                os.setpgid(0, 0)
                os.read(go_r, 1)  # wait until our group owns the terminal
                signal.signal(signal.SIGHUP, signal.SIG_DFL)
                for fd in (0, 1, 2):
                    os.dup2(out_w if fd == 1 and out_w is not None else self.slave, fd)
                os.execv(VEXA, [VEXA])
            os.setpgid(pid, pid)
            os.tcsetpgrp(self.slave, pid)
            os.write(go_w, b"g")
            os.write(events, b"pid %d\n" % pid)
            while True:
                _, status = os.waitpid(pid, os.WUNTRACED)
                if os.WIFSTOPPED(status):
                    os.write(events, b"stop %d\n" % os.WSTOPSIG(status))
                    continue
                if os.WIFSIGNALED(status):
                    os.write(events, b"signal %d\n" % os.WTERMSIG(status))
                else:
                    os.write(events, b"exit %d\n" % os.WEXITSTATUS(status))
                break
        except BaseException as e:
            os.write(2, ("shell: %r\n" % e).encode())
        os._exit(0)

    def event(self, timeout=10.0):
        """The shell's next report on vexa: 'pid N', 'stop SIG', 'signal SIG', 'exit N'."""
        end = time.monotonic() + timeout
        while b"\n" not in self.pending and time.monotonic() < end:
            if select.select([self.events], [], [], max(0.0, end - time.monotonic()))[0]:
                data = os.read(self.events, 256)
                if not data:
                    break
                self.pending += data
        line, _, self.pending = self.pending.partition(b"\n")
        if line.split()[:1] in ([b"exit"], [b"signal"]):
            self.done = line.decode()
        return line.decode()

    def read_until(self, marker, timeout=5.0):
        end = time.monotonic() + timeout
        while marker not in self.buf and time.monotonic() < end:
            if not select.select([self.out], [], [], max(0.0, end - time.monotonic()))[0]:
                break
            try:
                data = os.read(self.out, 4096)
            except OSError:
                break
            if not data:
                break
            self.buf += data
        i = self.buf.find(marker)
        cut = len(self.buf) if i < 0 else i + len(marker)
        got, self.buf = self.buf[:cut], self.buf[cut:]
        return got

    def key(self, name, keys, expected):
        os.write(self.master, keys)
        ok = check(name, expected, self.read_until(expected))
        if ok and (expected.endswith(b"\x1b7> ") or expected.endswith(b" = ? ")):
            self.wait_raw(name)
        return ok

    def steps(self, name, steps):
        for i, (keys, expected) in enumerate(steps):
            if not self.key("%s, step %d %r" % (name, i + 1, keys), keys, expected):
                return False  # later steps would only repeat the failure
        return True

    def wait_raw(self, name):
        """Waits until vexa has put the terminal into its editing mode. The prompt is
        written before the switch, so keys must not be sent before this."""
        end = time.monotonic() + 5.0
        attrs = termios.tcgetattr(self.slave)
        while attrs[3] & termios.ICANON and time.monotonic() < end:
            time.sleep(0.002)
            attrs = termios.tcgetattr(self.slave)
        cc = [c if isinstance(c, int) else c[0] for c in (attrs[6][termios.VMIN], attrs[6][termios.VTIME])]
        return check(name + ": editing mode", [0, 0, 0, 1, 0], modes(attrs) + cc)

    def close(self):
        if self.done is None:
            os.kill(self.pid, signal.SIGKILL)
        os.waitpid(self.shell, 0)
        for fd in {self.master, self.slave, self.out, self.events}:
            try:
                os.close(fd)
            except OSError:
                pass


def start(name, history=(), **options):
    v = Vexa(**options)
    v.key(name + ": greeting", b"", GREETING)
    for line in history:
        os.write(v.master, line + b"\r")
        v.read_until(b"\x1b7> ")
        v.wait_raw(name)
    return v


X78, X101 = b"x" * 78, b"x" * 101
ENTERED = b"\r\nans = %s\r\n\x1b7> "
CASES = [  # (name, history lines entered first, [(keys, expected bytes)])
    ("insert and move", (), typing(b"abc") + [
        (LEFT, draw(b"abc", 2)), (LEFT, draw(b"abc", 1)), (b"X", draw(b"aXbc", 2)),
        (BS, draw(b"abc", 1, pad=1)), (BS, draw(b"bc", 0, pad=1))]),
    ("ends and clamping", (), typing(b"ab") + [
        (RIGHT, draw(b"ab", 2)), (HOME, draw(b"ab", 0)), (LEFT, draw(b"ab", 0)),
        (BS, draw(b"ab", 0)), (END, draw(b"ab", 2)), (b"\x01", draw(b"ab", 0)),
        (b"\x05", draw(b"ab", 2))]),
    ("delete", (), typing(b"abc") + [
        (DEL, draw(b"abc", 3)), (LEFT, draw(b"abc", 2)), (LEFT, draw(b"abc", 1)),
        (DEL, draw(b"ac", 1, pad=1)), (b"\x1b[3x", draw(b"ac", 1)), (b"\x1b[Z", draw(b"ac", 1))]),
    ("escape", (), typing(b"abc") + [
        (LEFT, draw(b"abc", 2)), (b"\x1b\x1b", draw(b"", 0, pad=3)), (b"q", draw(b"q", 1)),
        (b"\x1ba", draw(b"q", 1)),  # the sequence's "~" then arrives as a key of its own
        (b"\x1b[1~", draw(b"q", 1) + draw(b"q~", 2)), (b"\x1b[2~", draw(b"q~", 2) + draw(b"q~~", 3))]),
    ("control and high bytes are text", (), typing(b"\t\x04\x02\x08\xc3\xa9")),
    ("clear screen", (), typing(b"ab") + [(b"\x0c", b"\x1b[2J\x1b[H\x1b7" + draw(b"ab", 2))]),
    ("wrap at 80 columns", (), typing(X78[:-1]) + [
        (b"x", b"\x1b8> " + X78 + b"\x1b8\x1b[1B"),
        (b"x", b"\x1b8> " + X78 + b"x\x1b8\x1b[1B\x1b[1C")] + typing(b"x" * 22, X78 + b"x") + [
        (LEFT, b"\x1b8> " + X101 + b"\x1b8\x1b[1B\x1b[22C")]),
    ("history up", (b"1+1", b"2+2"), [
        (UP, draw(b"2+2", 3)), (UP, draw(b"1+1", 3)), (UP, draw(b"", 0, pad=3)), (UP, draw(b"2+2", 3))]),
    ("history down", (b"1+1", b"2+2"), [
        (DOWN, draw(b"1+1", 3)), (DOWN, draw(b"2+2", 3)), (DOWN, draw(b"", 0, pad=3))]),
    ("history keeps no repeat or empty line", (b"1+1", b"2+2", b"2+2", b""), [
        (UP, draw(b"2+2", 3)), (UP, draw(b"1+1", 3)), (UP, draw(b"", 0, pad=3))]),
    ("history repeats an older line", (b"1+1", b"2+2", b"1+1"), [
        (UP, draw(b"1+1", 3)), (UP, draw(b"2+2", 3)), (UP, draw(b"1+1", 3)), (UP, draw(b"", 0, pad=3))]),
    ("recall pads a shorter entry", (b"100+1", b"2"), typing(b"abc") + [
        (UP, draw(b"2", 1, pad=2)), (UP, draw(b"100+1", 5)), (DOWN, draw(b"2", 1, pad=4))]),
    ("recall without history", (), typing(b"ab") + [(UP, draw(b"", 0, pad=2)), (b"c", draw(b"c", 1)),
                                                    (DOWN, draw(b"", 0, pad=1))]),
    ("enter as line feed", (), typing(b"1+1") + [(HOME, draw(b"1+1", 0)),
                                                 (b"\n", b"\x1b8> 1+1" + ENTERED % b"2"), (UP, draw(b"1+1", 3))]),
    ("enter as carriage return", (), typing(b"2*3") + [(b"\r", b"\x1b8> 2*3" + ENTERED % b"6")]),
    ("tab is returned with the line", (), typing(b"2\t+3") + [
        (b"\r", b"\x1b8> 2\t+3" + ENTERED % b"5"), (UP, draw(b"2\t+3", 4))]),
    ("empty line", (), [(b"\r", b"\x1b8> \r\n\x1b7> "), (UP, draw(b"", 0))]),
]


def run_case(name, history, steps):
    v = start(name, history)
    try:
        v.steps(name, steps)
    finally:
        v.close()


def test_unknown_width():
    # A zero column count, and a window-size query that fails because standard output
    # is no terminal, both place the cursor on the prompt's own line.
    for name, options, greeting in (("zero columns", {"cols": 0}, GREETING),
                                    ("output to a pipe", {"stdout_pipe": True},
                                     b"Type 'help' for help.\n\n\x1b7> ")):
        v = Vexa(**options)
        try:
            v.key(name + ": greeting", b"", greeting)
            v.wait_raw(name)
            v.key(name, b"a", b"\x1b8> a\r\x1b[3C")
        finally:
            v.close()


def test_exits():
    # Every way out of vexa leaves the terminal as it was found.
    for name, text, key, status in (("quit", b"quit", (b"\r", b"\x1b8> quit\r\nBye!\r\n"), "exit 0"),
                                    ("ctrl-c", b"12", (b"\x03", b""), "signal 2")):
        v = start(name)
        try:
            v.steps(name, typing(text) + [key])
            check(name + ": status", status, v.event())
            check(name + ": terminal restored", modes(v.initial), modes(termios.tcgetattr(v.slave)))
        finally:
            v.close()
    v = start("hangup")
    try:
        v.steps("hangup", typing(b"12"))
        os.close(v.master)  # vexa reads the end of the terminal's input
        check("hangup: status", "exit 0", v.event(timeout=20.0))
    finally:
        v.close()


def test_suspend():
    v = start("ctrl-z")
    try:
        v.steps("ctrl-z", typing(b"1+"))
        os.write(v.master, b"\x1a")
        check("ctrl-z: stopped", "stop %d" % signal.SIGTSTP, v.event())
        check("ctrl-z: terminal restored while stopped", modes(v.initial), modes(termios.tcgetattr(v.slave)))
        os.kill(v.pid, signal.SIGCONT)
        v.key("ctrl-z: redraw after continue", b"", draw(b"1+", 2))
        v.wait_raw("ctrl-z: after continue")
        v.key("ctrl-z: typing after continue", b"1", draw(b"1+1", 3))
        v.key("ctrl-z: enter after continue", b"\r", b"\x1b8> 1+1" + ENTERED % b"2")
    finally:
        v.close()


def test_formula_prompt():
    # An answer to a formula file's prompt is recalled at the session prompt.
    with open("p.frm", "w") as f:
        f.write("prompt a\nshow a\n")
    v = start("formula prompt")
    try:
        steps = typing(b"p.frm") + [
            (b"\r", b"\x1b8> p.frm\r\n\x1b7a = ? "),
            (b"7", draw(b"7", 1, prompt=b"a = ? ")),
            (b"\r", b"\x1b8a = ? 7\r\na = 7\r\n\x1b7> "),
            (UP, draw(b"7", 1)), (UP, draw(b"p.frm", 5)), (UP, draw(b"", 0, pad=5))]
        v.steps("formula prompt", steps)
    finally:
        v.close()
        os.remove("p.frm")


if __name__ == "__main__":
    os.chdir(tempfile.mkdtemp(prefix="vexa_terminal_"))  # formula files are looked up here
    for case in CASES:
        run_case(*case)
    test_unknown_width()
    test_exits()
    test_suspend()
    test_formula_prompt()
    os.rmdir(os.getcwd())
    if failures:
        print("%d check(s) failed" % len(failures))
        sys.exit(1)
    print("all terminal checks passed")
