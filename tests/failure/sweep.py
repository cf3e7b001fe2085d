"""vexa run again and again with one allocation or one system call failing per run.

allocations VEXA ALLOCATOR: each allocation from main on fails in turn (a preloaded allocator) in a
session of every command but bench, a formula file and the file commands. A run must print what the
run without failure prints, or the same up to one "Out of memory" line; a session must then go on line
by line to its end, a formula file to its last line, and every evaluating formula line must be so
reported by some run.

syscalls VEXA [STRACE]: each system call after main fails in turn, with strace, with the errors the
kernel gives there (a call made many times at its first, last and a few middle ones). EINTR and EAGAIN
must change no byte, and no read or write but the one retried; other errors must leave the output of
a run with one input missing or cut (at 0 or a multiple of 64 KiB, truncated or zero-filled), a
prefix of it for a failed write, or "Out of memory" where the kernel refuses memory.

Every run must end in time with status 0 and nothing on stderr; 77 means skipped."""

import base64, hashlib, os, re, shutil, signal, subprocess, sys, tempfile
from concurrent.futures import ThreadPoolExecutor

START = 'abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRTUVWXY346789abcdefghijkm'
FORMULA = b"""# the sides come from the arguments
prompt a
prompt b
c = sqrt(a^2 + b^2)
show c
print b is &b and a is &a , so c is &c
show q
x = 1 +
print total: &c. (&c) & &y
print end of f.frm
"""
EVALUATING_LINES = {4, 5, 6, 7, 8, 9}
SESSION = [
    'x = 2 * sin(pi / 4) + 1', 'x = x ^ 2 + 4!2 - 7 % 3 / 2', '(1 + q', 'debug on', 'z = (1 + 2) * 3 + q',
    'debug off', 'help', 'formula', 'f.frm 3 4 y=7', 'g.frm', 'hex 255', 'unhex ff', 'md5 data.bin',
    'sha1 data.bin', 'sha256 data.bin', 'escape data.bin', 'base64 data.bin', 'unbase64 data.b64',
    'url_encode data.bin', 'url_decode data.url', 'base64 hello', 'unbase64 aGVsbG8gd29ybGQ',
    'url_encode a b/c?d=\u00e9', 'url_decode a%20b%zz%4', 'comma 1234567', 'comma x', 'uuid', 'localtime 0',
    'gmtime 1000000000', 'verify %s:%s' % (START, hashlib.sha256(START.encode()).hexdigest()), 'x + y',
    'reset', 'x', 'clear', 'quit']
# No uuid (its seeding reads the clock thousands of times, each a stop under strace) nor localtime
# (the zone file); each command reads a file of its own, so a failed read shows in its output alone.
SHORT_SESSION = ['x = 2 * sin(pi / 4) + 1', 'f.frm 3 4', 'md5 md5.in', 'escape escape.in', 'base64 base64.in',
                 'unbase64 unbase64.in', 'url_decode url_decode.in', 'help', 'clear', 'x', 'quit']
ONE_SHOT = [['md5', 'data.bin'], ['sha256', 'data.bin'], ['escape', 'data.bin'], ['base64', 'data.bin'],
            ['unbase64', 'data.b64'], ['url_decode', 'data.url'], ['unbase64', 'big.b64']]


def make_folder(folder):
    # big.b64 spans two read blocks (768 KiB each); its decoded bytes, none zero, overflow into a temporary file.
    data = b'plain text with a % and a line\n' + bytes(range(256))
    files = {'data.bin': data, 'data.b64': base64.b64encode(data), 'f.frm': FORMULA,
             'data.url': b''.join(b'%%%02X' % b if b % 3 else bytes([b or 65]) for b in data),
             'big.b64': base64.b64encode(bytes(range(1, 256)) * 4000),
             'session.txt': ('\n'.join(SESSION) + '\n').encode(),
             'short.txt': ('\n'.join(SHORT_SESSION) + '\n').encode()}
    for command, source in [('md5', 'bin'), ('escape', 'bin'), ('base64', 'bin'), ('unbase64', 'b64'),
                            ('url_decode', 'url')]:
        files[command + '.in'] = files['data.' + source]
    inputs = list(files)
    files['bin/clear'] = b'#!/bin/sh\n'  # "clear" runs a shell: a quiet stand-in keeps the terminal's codes out
    os.makedirs(os.path.join(folder, 'bin'), exist_ok=True)
    for name, content in files.items():
        write(os.path.join(folder, name), content)
    os.chmod(os.path.join(folder, 'bin', 'clear'), 0o755)
    return inputs


def write(path, content):
    with open(path, 'wb') as f:
        f.write(content)


def run(command, folder, stdin, **env):
    """(status, stdout with what changes from run to run masked, stderr), or None if stopped."""
    env.update(PATH=folder + '/bin:/usr/bin:/bin', TZ='UTC', LC_ALL='C', TERM='dumb')
    with open(os.path.join(folder, stdin) if stdin else os.devnull, 'rb') as given:
        proc = subprocess.Popen(command, cwd=folder, stdin=given, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                env=env, start_new_session=True)
        try:
            stdout, stderr = proc.communicate(timeout=60)
        except subprocess.TimeoutExpired:
            os.killpg(proc.pid, signal.SIGKILL)  # vexa too: strace's end would leave it spinning
            proc.communicate()
            return None
    out = re.sub(rb'[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}', b'UUID', stdout)
    return proc.returncode, re.sub(rb'~\d+ (seconds|hashes)', rb'~N \1', out), stderr


def says_out_of_memory(out, expected):
    """Whether out keeps the expected lines up to one that says "Out of memory"."""
    got, want = out.splitlines(True), expected.splitlines(True)
    same = 0
    while same < min(len(got), len(want)) and got[same] == want[same]:
        same += 1
    return same < len(got) and b'Out of memory' in got[same]


def prompts(out):
    return sum(len(m.group()) // 2 for m in re.finditer(rb'(?m)^(?:> )+', out))


def reported_lines(out):
    return {int(n) for n in re.findall(rb'f\.frm, line (\d+): Out of memory', out)}


def sweep(cases, folder, failures, judge):
    """The faults of every case (name, command, stdin, env) under the runs (label, command, env) or the
    fault that failures(case, expected) gives, runs judged by judge(case, run, result, expected)."""
    faults = []
    for case in cases:
        name, command, stdin, env = case
        expected = run(command, folder, stdin, **env)
        runs = failures(case, expected[1]) if common_problem(expected) is None else \
            'fails without failure: %s' % common_problem(expected)
        if isinstance(runs, str):
            faults.append('%s: %s' % (name, runs))
            continue
        with ThreadPoolExecutor(os.cpu_count() or 2) as pool:
            results = list(pool.map(lambda r: run(r[1], folder, stdin, **r[2]), runs))
        for each, result in zip(runs, results):
            problem = common_problem(result) or judge(case, each, result, expected[1])
            if problem:
                faults.append('%s, %s: %s' % (name, each[0], problem))
        print('%s: %d runs' % (name, len(runs)), flush=True)
    return faults


def make_cases(vexa, session, env, one_shots):
    return [('session', [vexa], session, env), ('formula', [vexa, 'f.frm', '3', '4'], None, env)] + \
        [(' '.join(args), [vexa] + args, None, env) for args in one_shots]


def allocations(vexa, allocator, folder):
    make_folder(folder)
    count = os.path.join(folder, 'count')
    preload = {'LD_PRELOAD': allocator}
    cases = make_cases(vexa, 'session.txt', preload, ONE_SHOT)
    reported, made = {}, []

    def failures(case, expected):
        name, command, stdin, _ = case
        if os.path.exists(count): os.remove(count)
        run(command, folder, stdin, VEXA_COUNT_ALLOCATIONS=count, **preload)
        made.append(int(open(count).read()) if os.path.exists(count) else 0)
        return [('allocation %d of %d' % (n, made[-1]), command, dict(preload, VEXA_FAIL_ALLOCATION=str(n)))
                for n in range(1, made[-1] + 1)]

    def judge(case, failure, result, expected):
        name, out = case[0], result[1]
        if out == expected:
            return None
        reported.setdefault(name, set()).update(reported_lines(out))
        if not says_out_of_memory(out, expected):
            return 'output changed without "Out of memory": %r' % out[-300:]
        if out.count(b'Out of memory') != 1:
            return 'one failure reported %d times' % out.count(b'Out of memory')
        if name == 'session' and (prompts(out) != prompts(expected) or
                                  not out.endswith(expected.splitlines(True)[-1])):
            return 'the session did not go on line by line to its end: %r' % out[-300:]
        if reported_lines(out) and b'end of f.frm' not in out:
            return 'the formula file did not go on to its end: %r' % out[-300:]
        return None

    faults = sweep(cases, folder, failures, judge)
    if not any(made):
        print('skipped: no allocation failed; the allocator cannot be preloaded here')
        return 77
    for name in ('session', 'formula'):
        missing = EVALUATING_LINES - reported.get(name, set())
        if missing:
            faults.append('%s: no run reports running out of memory on f.frm lines %s' % (name, sorted(missing)))
    return faults


# For each call: the errors that must change nothing, and those to survive. Left out: brk (the kernel
# refuses by returning the old break, which strace cannot imitate), calls that fail only for bad
# arguments, execve and exit_group.
ERRORS = {
    'read': (['EINTR', 'EAGAIN'], ['EIO']), 'pread64': (['EINTR'], ['EIO']), 'close': (['EINTR'], ['EIO']),
    'write': (['EINTR', 'EAGAIN'], ['ENOSPC', 'EIO', 'EPIPE']), 'openat': (['EINTR'], ['EACCES', 'EMFILE', 'ENOMEM']),
    'newfstatat': ([], ['ENOMEM', 'EOVERFLOW']), 'fstat': ([], ['ENOMEM', 'EOVERFLOW']), 'poll': (['EINTR'], []),
    'lseek': ([], ['EINVAL', 'EOVERFLOW']), 'ioctl': ([], ['EIO']), 'mmap': ([], ['ENOMEM']), 'munmap': ([], ['ENOMEM']),
    'mremap': ([], ['ENOMEM']), 'clone': ([], ['EAGAIN', 'ENOMEM']), 'clone3': ([], ['EAGAIN', 'ENOMEM']),
    'wait4': (['EINTR'], ['ECHILD']), 'unlink': ([], ['EACCES', 'EIO']), 'sendfile': (['EINTR'], ['EIO'])}


def syscalls(vexa, strace, folder):
    tried = strace and shutil.which(strace) and subprocess.run([strace, '-qq', '-o', os.devnull, 'true'],
                                                                capture_output=True)
    if not tried or tried.returncode != 0:
        print('skipped: strace is missing or cannot trace here:', tried.stderr.decode(errors='replace') if tried else 'no strace')
        return 77
    inputs = make_folder(folder)
    # No -f: the shell that "clear" starts is no part of vexa. Fixed addresses make the loader's calls,
    # counted before main, the same in every run.
    fixed = subprocess.run(['setarch', '-R', 'true'], capture_output=True).returncode == 0
    trace = ['setarch', '-R'] * fixed + [strace, '-qq']
    cases = make_cases(vexa, 'short.txt', {}, ONE_SHOT + [['sha256', 'big.b64']])
    variants, reference = {}, {}

    def failures(case, expected):
        name, command, stdin, _ = case
        log = os.path.join(folder, 'trace')
        if run(trace + ['-o', log] + command, folder, stdin)[1] != expected:
            return 'the run under strace without failure prints other output'
        before, after, descriptors = calls(log)
        reference[name] = after
        runs = []
        for call, count in sorted(after.items()):
            picked = range(1, count + 1) if count <= 12 else \
                sorted({1, 2, 3, 4, 5, 6, count // 4, count // 2, 3 * count // 4, count - 2, count - 1, count})
            for when in picked if call in ERRORS else []:
                for error in ERRORS[call][0] + ERRORS[call][1]:
                    # A file vexa opens blocks: only what it is given may be non-blocking.
                    if error == 'EAGAIN' and descriptors[call][when - 1] not in ('0', '1'):
                        continue
                    inject = '%s:error=%s:when=%d' % (call, error, before.get(call, 0) + when)
                    inject += ':signal=SIGPIPE' if error == 'EPIPE' else ''
                    # A failed sendfile falls back to pread, whose first call is then interrupted.
                    more = ['-e', 'inject=pread64:error=EINTR:when=%d' % (before.get('pread64', 0) + 1)] \
                        if call == 'sendfile' and error == 'EIO' else []
                    log = os.path.join(folder, 'trace-%d' % len(runs))
                    runs.append(('%s %d failing with %s' % (call, when, error),
                                 trace + ['-o', log, '-e', 'inject=' + inject] + more + command, {}))
        return runs

    def judge(case, failure, result, expected):
        (label, command, _), out = failure, result[1]
        call, error = label.split()[0], label.split()[-1]
        if error in ERRORS[call][0]:
            # Retried (or for close let be), perhaps after a poll; no other reads or writes come or go.
            made, before = calls(command[command.index('-o') + 1])[1], reference[case[0]]
            changed = {c for c in IO if made.get(c, 0) - before.get(c, 0) not in ((0, 1) if c == call else (0,))}
            if bool(made.get('sendfile')) != bool(before.get('sendfile')):  # its count follows the reader's pace
                changed.add('sendfile')
            if changed or out != expected:
                return 'output or the calls %s changed: %r' % (sorted(changed), out[-300:])
        if out == expected or call == 'write' and expected.startswith(out) or \
                call in ('mmap', 'munmap', 'mremap') and says_out_of_memory(out, expected):
            return None
        if case[0] not in variants:
            variants[case[0]] = short_inputs(case[1], case[2])
        if out not in variants[case[0]]:
            return 'output is none that a missing or short input gives: %r' % out[-300:]

    def short_inputs(command, stdin):
        found = set()
        with tempfile.TemporaryDirectory(prefix='vexa-short-') as other:
            make_folder(other)
            for name in inputs:
                content = open(os.path.join(folder, name), 'rb').read()
                for cut in range(0, len(content), 1 << 16):
                    for rest in (b'', bytes(len(content) - cut)):
                        write(os.path.join(other, name), content[:cut] + rest)
                        found.add(run(command, other, stdin)[1])
                os.remove(os.path.join(other, name))
                found.add(run(command, other, None if name == stdin else stdin)[1])
                write(os.path.join(other, name), content)
        return found

    return sweep(cases, folder, failures, judge)


IO = ('read', 'write', 'pread64', 'openat', 'close', 'lseek')


def calls(log):
    """From strace's log: the count of each call before main and after, and each one's first argument after."""
    before, after, first, begun = {}, {}, {}, False
    for line in open(log, errors='replace'):
        if not line.startswith(('---', '+++')):
            begun = begun or line.startswith('rt_sigaction(SIGPIPE')  # main's first call
            counts = after if begun else before
            call, argument = re.match(r'(\w+)\(([^,)]*)', line).groups()
            counts[call] = counts.get(call, 0) + 1
            if begun:
                first.setdefault(call, []).append(argument)
    return before, after, first


def common_problem(result):
    if result is None:
        return 'no end within the time limit'
    if result[0] != 0 or result[2]:
        return 'status %d, stderr %r' % (result[0], result[2][-300:])


def main():
    mode, vexa = sys.argv[1], os.path.abspath(sys.argv[2])
    tool = sys.argv[3] if len(sys.argv) > 3 else shutil.which('strace')
    with tempfile.TemporaryDirectory(prefix='vexa-%s-' % mode) as folder:
        faults = allocations(vexa, os.path.abspath(tool), folder) if mode == 'allocations' else \
            syscalls(vexa, tool, folder)
    if faults == 77:
        return 77
    print(''.join('FAIL %s\n' % fault for fault in faults[:40]) + '%d faults' % len(faults))
    return 1 if faults else 0


if __name__ == '__main__':
    sys.exit(main())
