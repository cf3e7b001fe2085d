"""What the failure sweeps run: a session that touches every command but bench
(its ten seconds of hashing would be repeated for every case), a formula file,
and the file commands given as arguments, in a folder of small input files."""

import base64
import hashlib
import os
import re
import subprocess

# A 64-character chain start and the string one SHA-256 step reaches from it.
START = 'abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRTUVWXY346789abcdefghijkm'
END = hashlib.sha256(START.encode()).hexdigest()

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
# The lines of FORMULA that evaluate something.
EVALUATING_LINES = {4, 5, 6, 7, 8, 9}

SESSION = [
    'x = 2 * sin(pi / 4) + 1', 'x = x ^ 2 + 4!2 - 7 % 3 / 2', '(1 + q', 'debug on',
    'z = (1 + 2) * 3 + q', 'debug off', 'help', 'formula', 'f.frm 3 4 y=7', 'g.frm',
    'hex 255', 'unhex ff', 'md5 data.bin', 'sha1 data.bin', 'sha256 data.bin',
    'escape data.bin', 'base64 data.bin', 'unbase64 data.b64', 'url_encode data.bin',
    'url_decode data.url', 'base64 hello', 'unbase64 aGVsbG8gd29ybGQ', 'url_encode a b/c?d=\u00e9',
    'url_decode a%20b%zz%4', 'comma 1234567', 'comma x', 'uuid', 'localtime 0',
    'gmtime 1000000000', 'verify %s:%s' % (START, END), 'x + y', 'reset', 'x', 'clear', 'quit',
]

# A shorter session for the system-call sweep, without uuid, whose seeding reads
# the clock thousands of times, each call a stop under strace. Each command
# reads a file of its own, so that a failed read shows in its output alone.
SHORT_SESSION = [
    'x = 2 * sin(pi / 4) + 1', 'f.frm 3 4', 'md5 md5.in', 'escape escape.in', 'base64 base64.in',
    'unbase64 unbase64.in', 'url_decode url_decode.in', 'localtime 0', 'help', 'clear', 'x', 'quit',
]

# (name, arguments, standard input); the sessions read their lines from a file.
CASES = [('session', [], 'session.txt'), ('formula', ['f.frm', '3', '4'], None)] + [
    (command + ' ' + path, [command, path], None) for command, path in [
        ('md5', 'data.bin'), ('sha256', 'data.bin'), ('escape', 'data.bin'), ('base64', 'data.bin'),
        ('unbase64', 'data.b64'), ('url_encode', 'data.bin'), ('url_decode', 'data.url'),
        ('unbase64', 'big.b64')]]


def make_folder(folder):
    """Writes the inputs. big.b64 spans two read blocks (768 KiB each), and its
    decoded bytes, none of them zero, overflow into unbase64's temporary file."""
    data = b'plain text with a % and a line\n' + bytes(range(256))
    files = {
        'big.b64': base64.b64encode(bytes(range(1, 256)) * 4000),
        'data.bin': data,
        'data.b64': base64.b64encode(data),
        'data.url': b''.join(b'%%%02X' % b if b % 3 else bytes([b or 65]) for b in data),
        'f.frm': FORMULA,
        'session.txt': ('\n'.join(SESSION) + '\n').encode(),
        'short.txt': ('\n'.join(SHORT_SESSION) + '\n').encode(),
    }
    for command, source in [('md5', 'data.bin'), ('escape', 'data.bin'), ('base64', 'data.bin'),
                            ('unbase64', 'data.b64'), ('url_decode', 'data.url')]:
        files[command + '.in'] = files[source]
    for name, content in files.items():
        with open(os.path.join(folder, name), 'wb') as f:
            f.write(content)
    # "clear" runs a shell: a quiet stand-in keeps its output out of the comparison.
    os.makedirs(os.path.join(folder, 'bin'), exist_ok=True)
    clear = os.path.join(folder, 'bin', 'clear')
    with open(clear, 'w') as f:
        f.write('#!/bin/sh\n:\n')
    os.chmod(clear, 0o755)


def environment(folder, **extra):
    env = {'PATH': os.path.join(folder, 'bin') + ':/usr/bin:/bin', 'TZ': 'UTC', 'LC_ALL': 'C',
           'TERM': 'dumb'}
    env.update(extra)
    return env


def run(command, folder, stdin, env, timeout=30):
    """(status, stdout, stderr), or None when the run had to be stopped."""
    with open(os.path.join(folder, stdin) if stdin else os.devnull, 'rb') as given:
        try:
            done = subprocess.run(command, cwd=folder, stdin=given, capture_output=True, env=env,
                                  timeout=timeout)
        except subprocess.TimeoutExpired:
            return None
    return done.returncode, normal(done.stdout), done.stderr


def normal(out):
    """Output with what changes from run to run (a UUID, verify's timing) masked."""
    out = re.sub(rb'[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}', b'UUID', out)
    return re.sub(rb'~\d+ (seconds|hashes per second)', rb'~N \1', out)


def prompts(out):
    """The number of prompts in a session's output."""
    return sum(len(m.group()) // 2 for m in re.finditer(rb'(?m)^(?:> )+', out))


def says_out_of_memory(out, expected):
    """Whether out differs from expected only from a line that says "Out of
    memory" on: the lines before it are the expected ones, none is lost silently."""
    got, want = out.splitlines(True), expected.splitlines(True)
    same = 0
    while same < min(len(got), len(want)) and got[same] == want[same]:
        same += 1
    return same < len(got) and b'Out of memory' in got[same]
