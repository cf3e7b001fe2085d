#!/usr/bin/env python3
"""Black-box tests of the file commands on paths that are not plain files: pipes given as
/dev/stdin or by process substitution, read to their end, and a FIFO without a writer,
which is an existing, empty file at once. Usage: test_streams.py <path-to-vexa>"""
import base64
import hashlib
import os
import sys
import tempfile
import urllib.parse

import blackbox

VEXA = os.path.abspath(sys.argv[1])
WARN = b"Warning: input string length not multiple of 4.\n"
# Over three blocks of 192 KiB, so that a pipe is read in many pieces.
DATA = bytes((i * 131 + (i >> 7)) % 255 + 1 for i in range(700001))  # no zero byte
TEXT = base64.b64encode(DATA)


def cases(fifo):
    """(name, shell command line run with $0 = vexa, standard input, expected output)."""
    sha = hashlib.sha256(DATA).hexdigest().encode() + b"\n"
    quoted = urllib.parse.quote(DATA, safe=";,/?:@&=+$#!*'()").encode()
    return [
        ("sha256 of a pipe", '"$0" sha256 /dev/stdin', b"hi",
         hashlib.sha256(b"hi").hexdigest().encode() + b"\n"),
        ("base64 of process substitution", 'bash -c \'"$0" base64 <(printf hi)\' "$0"', b"",
         b"aGk=\n"),
        ("md5 of an empty pipe", '"$0" md5 /dev/stdin', b"", hashlib.md5(b"").hexdigest().encode()
         + b"\n"),
        ("sha256 of a long pipe", '"$0" sha256 /dev/stdin', DATA, sha),
        ("escape of a pipe", '"$0" escape /dev/stdin', b'a"\x00\n\xff', b'a\\"\\0\\n\\xff\n'),
        ("url_encode of a long pipe", '"$0" url_encode /dev/stdin', DATA, quoted + b"\n"),
        ("url_decode of a long pipe", '"$0" url_decode /dev/stdin', quoted, DATA + b"\n"),
        # The warning comes first, though only the pipe's end tells it is due.
        ("unbase64 of a long pipe", '"$0" unbase64 /dev/stdin', TEXT + b"QUE", WARN + DATA + b"\n"),
        ("unbase64 of a pipe ended by a zero byte", '"$0" unbase64 /dev/stdin',
         TEXT + b"QUFB\0Q" + TEXT, DATA + b"AAA\n"),
        ("base64 of a FIFO without a writer", '"$0" base64 ' + fifo, b"", b"\n"),
        ("sha1 of a FIFO without a writer", '"$0" sha1 ' + fifo, b"",
         hashlib.sha1(b"").hexdigest().encode() + b"\n"),
        ("unbase64 of a FIFO without a writer", '"$0" unbase64 ' + fifo, b"", b"\n"),
    ]


def main():
    with tempfile.TemporaryDirectory() as top:
        fifo = os.path.join(top, "fifo")
        os.mkfifo(fifo)
        return blackbox.report("stream", (
            (name, lambda c=command, s=stdin: blackbox.run(["sh", "-c", c, VEXA], s, top), expected)
            for name, command, stdin, expected in cases(fifo)))


if __name__ == "__main__":
    sys.exit(main())
