"""Fails each system call vexa makes after main begins, one per run, with strace's
fault injection, over a short session, a formula file and the file commands.
Each call fails in turn with the errors the kernel really gives it there:
  - EINTR and EAGAIN, where real, must change no byte of the output;
  - every other error must be survived: status 0, nothing on stderr, an end in
    time, and the output of the run without failure, or what vexa prints when
    one input file is missing or ends early (the measured file commands read
    zeros for the rest), or for a failed write a prefix of it, or, for memory
    the kernel refuses, the output up to a line that says "Out of memory".
A call that occurs many times fails at its first, last and a few middle ones.

usage: syscalls.py VEXA [STRACE]"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

import scenario

# For each call: the errors that must change nothing, and those to survive.
# Left out: brk (the kernel refuses by returning the old break, not an error,
# which glibc's bookkeeping cannot take), clock_gettime and the signal-mask calls
# (they fail only for bad arguments), execve and exit_group.
ERRORS = {
    'read': (['EINTR', 'EAGAIN'], ['EIO']),
    'pread64': (['EINTR'], ['EIO']),
    'write': (['EINTR', 'EAGAIN'], ['ENOSPC', 'EIO', 'EPIPE']),
    'openat': (['EINTR'], ['EACCES', 'EMFILE', 'ENOMEM']),
    'newfstatat': ([], ['ENOMEM', 'EOVERFLOW']),
    'fstat': ([], ['ENOMEM', 'EOVERFLOW']),
    'lseek': ([], ['EINVAL', 'EOVERFLOW']),
    'close': (['EINTR'], ['EIO']),
    'poll': (['EINTR'], []),
    'ioctl': ([], ['EIO']),
    'mmap': ([], ['ENOMEM']),
    'munmap': ([], ['ENOMEM']),
    'mremap': ([], ['ENOMEM']),
    'clone': ([], ['EAGAIN', 'ENOMEM']),
    'clone3': ([], ['EAGAIN', 'ENOMEM']),
    'wait4': (['EINTR'], ['ECHILD']),
    'unlink': ([], ['EACCES', 'EIO']),
}
MEMORY = {'mmap', 'munmap', 'mremap'}
SAMPLE = 12  # calls of one kind failed at most per case

# The first call vexa's own main makes: everything before it is the loader's.
MAIN_BEGINS = 'rt_sigaction(SIGPIPE'

CASES = [('session', [], 'short.txt'), ('formula', ['f.frm', '3', '4'], None)] + [
    (command + ' ' + path, [command, path], None) for command, path in [
        ('sha256', 'data.bin'), ('md5', 'data.bin'), ('base64', 'data.bin'), ('unbase64', 'data.b64'),
        ('escape', 'data.bin'), ('url_decode', 'data.url'), ('sha256', 'big.b64'),
        ('unbase64', 'big.b64')]]
INPUTS = ['short.txt', 'f.frm', 'data.bin', 'data.b64', 'data.url', 'big.b64'] + [
    command + '.in' for command in ('md5', 'escape', 'base64', 'unbase64', 'url_decode')]


def main():
    vexa = sys.argv[1]
    strace = sys.argv[2] if len(sys.argv) > 2 else shutil.which('strace')
    if not strace:
        print('skipped: strace is not installed')
        return 77
    tried = subprocess.run([strace, '-qq', '-o', os.devnull, 'true'], capture_output=True)
    if tried.returncode != 0:
        print('skipped: strace cannot trace here:', tried.stderr.decode(errors='replace').strip())
        return 77
    # The same addresses in every run, so that the loader makes the same calls.
    prefix = [strace, '-qq']
    if subprocess.run(['setarch', '-R', 'true'], capture_output=True).returncode == 0:
        prefix = ['setarch', '-R'] + prefix
    with tempfile.TemporaryDirectory(prefix='vexa-syscalls-') as folder:
        scenario.make_folder(folder)
        env = scenario.environment(folder)
        faults, runs = [], 0
        for name, args, stdin in CASES:
            trace = os.path.join(folder, 'trace')
            expected = scenario.run([vexa] + args, folder, stdin, env)[1]
            traced = scenario.run(prefix + ['-o', trace, vexa] + args, folder, stdin, env)
            if traced != (0, expected, b''):
                faults.append('%s under strace without failure: %r' % (name, traced))
                continue
            calls = calls_after_main(trace)
            cases = [(call, when, error, error in ERRORS[call][0])
                     for call, (before, count) in sorted(calls.items()) if call in ERRORS
                     for when in sample(before, count)
                     for error in ERRORS[call][0] + ERRORS[call][1]]
            variants = Variants(vexa, args, stdin, folder)

            def fail(case):
                call, when, error, transient = case
                inject = '%s:error=%s:when=%d' % (call, error, when)
                if error == 'EPIPE':
                    inject += ':signal=SIGPIPE'
                command = prefix + ['-o', os.devnull, '-e', 'inject=' + inject, vexa] + args
                return case, scenario.run(command, folder, stdin, env)

            with ThreadPoolExecutor(os.cpu_count() or 2) as pool:
                for (call, when, error, transient), result in pool.map(fail, cases):
                    problem = judge(result, expected, call, transient, variants)
                    if problem:
                        faults.append('%s, %s call %d failing with %s: %s' % (name, call, when, error, problem))
            runs += len(cases)
            print('%s: %d runs over %s' % (name, len(cases), ', '.join(
                '%s %d' % (call, count) for call, (_, count) in sorted(calls.items()) if call in ERRORS)))
        for fault in faults[:40]:
            print('FAIL', fault)
        print('%d runs, %d faults' % (runs, len(faults)))
        return 1 if faults else 0


def calls_after_main(trace):
    """{call: (how many came before main, how many after)} from an strace log."""
    before, after, begun = {}, {}, False
    with open(trace, errors='replace') as f:
        for line in f:
            if line.startswith(('---', '+++')):
                continue
            begun = begun or line.startswith(MAIN_BEGINS)
            call = re.match(r'\w+', line).group()
            counts = after if begun else before
            counts[call] = counts.get(call, 0) + 1
    return {call: (before.get(call, 0), count) for call, count in after.items()}


def sample(before, count):
    """strace's numbers of the calls to fail: all, or the first, last and a few
    between when there are many."""
    picked = set(range(1, count + 1))
    if count > SAMPLE:
        picked = set(range(1, 7)) | set(range(count - 2, count + 1)) | {count * k // 4 for k in (1, 2, 3)}
    return sorted(before + n for n in picked)


def judge(result, expected, call, transient, variants):
    if result is None:
        return 'no end within the time limit'
    status, out, errors = result
    if status != 0 or errors:
        return 'status %d, stderr %r' % (status, errors[-300:])
    if out == expected:
        return None
    if transient:
        return 'output changed: %r' % out[-300:]
    if call == 'write' and expected.startswith(out):
        return None
    if call in MEMORY and scenario.says_out_of_memory(out, expected):
        return None
    if out in variants.outputs():
        return None
    return 'output is none that a missing or short input gives: %r' % out[-300:]


class Variants:
    """What vexa prints, without failures, when one input is missing, or ends
    early: cut at 0 or at a multiple of 64 KiB, truncated or filled with zeros."""

    def __init__(self, vexa, args, stdin, folder):
        self.vexa, self.args, self.stdin, self.folder = vexa, args, stdin, folder
        self.found = None

    def outputs(self):
        if self.found is None:
            self.found = set()
            for name in INPUTS:
                self.found |= self.of_input(name)
        return self.found

    def of_input(self, name):
        with open(os.path.join(self.folder, name), 'rb') as f:
            content = f.read()
        changed = [None] + [content[:cut] + zeros for cut in range(0, len(content), 1 << 16)
                            for zeros in (b'', bytes(len(content) - cut))]
        folder = tempfile.mkdtemp(prefix='vexa-variant-')
        scenario.make_folder(folder)
        env = scenario.environment(folder)
        found = set()
        for replacement in changed:
            path = os.path.join(folder, name)
            if replacement is None:
                os.remove(path)
            else:
                with open(path, 'wb') as f:
                    f.write(replacement)
            stdin = None if replacement is None and name == self.stdin else self.stdin
            found.add(scenario.run([self.vexa] + self.args, folder, stdin, env)[1])
        shutil.rmtree(folder)
        return found


if __name__ == '__main__':
    sys.exit(main())
