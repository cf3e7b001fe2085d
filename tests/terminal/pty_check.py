#!/usr/bin/env python3
"""Runs a terminal test script against vexa under an emulator, or skips it with exit
status 77 and the reason when the emulated vexa gets no working pseudo-terminal.
Usage: pty_check.py SCRIPT VEXA"""
import os, pty, select, signal, sys, termios, time

SKIP = 77


def problem(vexa):
    """Why vexa cannot be tested on a pseudo-terminal here, or None if it can."""
    pid, master = pty.fork()
    if pid == 0:
        os.execv(vexa, [vexa])
    out, end, editing = b"", time.monotonic() + 20, False
    try:
        while b"> " not in out and select.select([master], [], [], max(0, end - time.monotonic()))[0]:
            data = os.read(master, 4096)
            if not data:
                break
            out += data
        while time.monotonic() < end and not editing:  # the slave's settings, read through the master
            editing = not termios.tcgetattr(master)[3] & termios.ICANON
            time.sleep(0.01)
    except OSError:
        pass
    finally:
        os.kill(pid, signal.SIGKILL)
        os.waitpid(pid, 0)
        os.close(master)
    if b"> " not in out:
        return "vexa showed no prompt on a pseudo-terminal (output %r)" % out[:200]
    if not editing:
        return "vexa could not switch the pseudo-terminal to byte-at-a-time input"
    return None


if __name__ == "__main__":
    script, vexa = sys.argv[1], os.path.abspath(sys.argv[2])
    reason = problem(vexa)
    if reason:
        print("skipped: %s under the emulator: %s" % (os.path.basename(script), reason))
        sys.exit(SKIP)
    os.execv(sys.executable, [sys.executable, script, vexa])
