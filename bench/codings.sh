#!/usr/bin/env bash
# Times vexa's Base64 and URL codings against the system's tools on 64 MiB files,
# checks that both give the same bytes, then runs the Google Benchmark program of
# the engine and the codings.
# Usage: bench/codings.sh   (from anywhere; builds into build-bench/)
#
# The tools: base64 -w0 and base64 -d; for URL encoding, python3's
# urllib.parse.quote and unquote_to_bytes, with quote keeping the same bytes as
# vexa's url_encode (letters, digits, -_.!~*'() and ;,/?:@&=+$#).
# MB/s is 10^6 bytes of input per second of user + sys time.
set -euo pipefail

source "$(dirname "$0")/build.sh" vexa engine_bench

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
mib=64
# random: every byte value. text: printable lines of 76 bytes with blanks, commas,
# points and '%' (about one byte in thirteen needs a URL escape) and no zero byte,
# so that a decoded output, which the session prints up to its first zero byte,
# is complete.
head -c $((mib << 20)) /dev/urandom >"$tmp/random"
# The last head cuts the stream short, so the pipe's earlier commands may die of
# SIGPIPE: their status is not looked at.
(set +o pipefail
  head -c $((mib * 3 / 4 << 20)) /dev/urandom | base64 -w 76 | tr '+/wxyz' '% ,.  ' |
    head -c $((mib << 20)) >"$tmp/text")
# The decoders' inputs are the encodings of the text's first 48 MiB, so that no
# file is above 64 MiB.
head -c $((mib * 3 / 4 << 20)) "$tmp/text" >"$tmp/plain"
base64 -w0 "$tmp/plain" >"$tmp/plain.b64"
cat >"$tmp/url.py" <<'EOF'
import sys
import urllib.parse

data = open(sys.argv[2], "rb").read()
if sys.argv[1] == "quote":
    out = urllib.parse.quote(data, safe=";,/?:@&=+$#!*'()").encode("ascii")
else:
    out = urllib.parse.unquote_to_bytes(data)
sys.stdout.buffer.write(out)
EOF
python3 "$tmp/url.py" quote "$tmp/plain" >"$tmp/plain.url"
cat "$tmp"/* >/dev/null  # every run reads from the page cache

# seconds COMMAND...: "wall user sys" seconds of one run, its output discarded.
# MB/s is taken from user + sys, which other load on the machine disturbs less
# than the wall clock.
seconds() {
  local TIMEFORMAT='%R %U %S'
  { time "$@" >/dev/null 2>&1; } 2>&1
}

# The session's commands end their output with puts' line feed.
with_line_feed() {
  "$@"
  echo
}

printf '%-34s %8s %7s %7s %7s %8s %9s  %s\n' command "input MB" wall user sys "MB/s" "tool/vexa" output
# run LABEL INPUT CHECK COMMAND...: one table row; CHECK is the name of a
# function that prints the bytes the command must print, or "-" for the tool
# whose output is the reference. A vexa row follows its tool's row and shows how
# many times faster the tool was.
tool_rate=0
run() {
  local label=$1 input=$2 check=$3 wall user sys bytes rate ratio verdict=reference
  shift 3
  bytes=$(stat -c %s "$input")
  read -r wall user sys < <(seconds "$@")
  if [ "$check" != - ]; then
    if cmp -s <("$check") <("$@"); then verdict=same; else verdict=DIFFERENT; fi
  fi
  rate=$(awk "BEGIN { print $bytes / 1e6 / ($user + $sys) }")
  if [ "${label#vexa}" = "$label" ]; then
    tool_rate=$rate ratio=
  else
    ratio=$(awk "BEGIN { printf \"%.1fx\", $tool_rate / $rate }")
  fi
  printf '%-34s %8.1f %7s %7s %7s %8.0f %9s  %s\n' "$label" "$(awk "BEGIN { print $bytes / 1e6 }")" \
    "$wall" "$user" "$sys" "$rate" "$ratio" "$verdict"
}

# What a command must print: the tool's encoding, or the known plain bytes.
encoded_lf() { with_line_feed base64 -w0 "$tmp/random"; }
plain() { cat "$tmp/plain"; }
plain_lf() { with_line_feed plain; }
quoted_lf() { with_line_feed python3 "$tmp/url.py" quote "$tmp/text"; }

run "base64 -w0 (random)" "$tmp/random" - base64 -w0 "$tmp/random"
run "vexa base64 (random)" "$tmp/random" encoded_lf "$vexa" base64 "$tmp/random"
run "base64 -d (text, encoded)" "$tmp/plain.b64" plain base64 -d "$tmp/plain.b64"
run "vexa unbase64 (text, encoded)" "$tmp/plain.b64" plain_lf "$vexa" unbase64 "$tmp/plain.b64"
run "python3 quote (text)" "$tmp/text" - python3 "$tmp/url.py" quote "$tmp/text"
run "vexa url_encode (text)" "$tmp/text" quoted_lf "$vexa" url_encode "$tmp/text"
run "python3 unquote (text, encoded)" "$tmp/plain.url" plain python3 "$tmp/url.py" unquote "$tmp/plain.url"
run "vexa url_decode (text, encoded)" "$tmp/plain.url" plain_lf "$vexa" url_decode "$tmp/plain.url"

echo
"$build/bench/engine_bench" --benchmark_min_time=2 2>&1
