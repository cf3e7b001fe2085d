#!/usr/bin/env bash
# Times vexa's file commands on 256 MiB files against the system's tools and
# against cat reading the same file, and reports each command's median wall
# time, its peak resident memory, and the ratio of its median to that of the
# tool or of cat, with the goal. The files are random bytes and English text
# (the project's own documents, repeated).
#
# Usage: bench/files.sh [rounds]   (default 7; builds into build-bench/)
#        bench/files.sh sparse     sha256 of a 20 GiB sparse file under
#                                  ulimit -v 524288, beside sha256sum (slow)
#
# Each round runs every command once, the tools and vexa in turn, so that load
# from elsewhere on the machine falls on both sides alike; the median of the
# rounds is reported. Outputs go to /dev/null after a first run of each vexa
# command has been compared with what the tools print.
set -euo pipefail

source "$(dirname "$0")/build.sh" vexa

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
echo "$(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ //'), $(nproc) cores"

# measure LABEL COMMAND...: one run; appends its wall seconds to $tmp/LABEL.wall
# and its peak resident KiB to $tmp/LABEL.mem.
measure() {
  local label=$1 TIMEFORMAT=%3R
  shift
  { time /usr/bin/time -f %M -o "$tmp/mem" "$@" >/dev/null 2>&1; } 2>>"$tmp/$label.wall"
  cat "$tmp/mem" >>"$tmp/$label.mem"
}
median() { sort -n "$1" | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
peak_mib() { sort -n "$1" | tail -n 1 | awk '{ printf "%.1f", $1 / 1024 }'; }

if [ "${1:-}" = sparse ]; then
  truncate -s 20G "$tmp/sparse"
  printf '%-32s %9s %9s  %s\n' "20 GiB sparse file" "wall s" "peak MiB" digest
  for label in sha256sum vexa; do
    if [ $label = vexa ]; then
      # The limit applies to vexa alone, in a subshell.
      (ulimit -v 524288; /usr/bin/time -f '%e %M' -o "$tmp/time" "$vexa" sha256 "$tmp/sparse" >"$tmp/out")
    else
      /usr/bin/time -f '%e %M' -o "$tmp/time" sha256sum "$tmp/sparse" >"$tmp/out"
    fi
    read -r wall mem <"$tmp/time"
    printf '%-32s %9s %9.1f  %s\n' "$([ $label = vexa ] && echo 'vexa sha256 (ulimit -v 524288)' || echo sha256sum)" \
      "$wall" "$(awk "BEGIN { print $mem / 1024 }")" "$(cut -d' ' -f1 "$tmp/out")"
  done
  exit 0
fi

rounds=${1:-7}
# Random bytes without a zero byte: the decoders print their output only up to
# its first zero byte, and the point is to time them over the whole file.
head -c 256M /dev/urandom | tr '\0' '\1' >"$tmp/data"
base64 -w0 "$tmp/data" >"$tmp/data.b64"
"$vexa" url_encode "$tmp/data" | head -c -1 >"$tmp/data.url"
while [ "$(stat -c %s "$tmp/text" 2>/dev/null || echo 0)" -lt 268435456 ]; do
  cat "$root/README.md" "$root/man/vexa.1" "$root"/src/*/*.hpp >>"$tmp/text"
done
truncate -s 256M "$tmp/text"
"$vexa" url_encode "$tmp/text" | head -c -1 >"$tmp/text.url"
cat "$tmp"/data* "$tmp"/text* >/dev/null  # every run reads from the page cache

# The commands, each a tool or vexa, as LABEL|COMMAND (words split at blanks).
d=$tmp/data t=$tmp/text
commands=(
  "cat|cat $d" "cat-b64|cat $d.b64" "cat-url|cat $d.url" "cat-text|cat $t" "cat-text-url|cat $t.url"
  "escape-text|$vexa escape $t" "url_encode-text|$vexa url_encode $t" "url_decode-text|$vexa url_decode $t.url"
  "openssl-sha256|openssl dgst -sha256 $d" "sha256|$vexa sha256 $d" "sha256sum|sha256sum $d"
  "openssl-sha1|openssl dgst -sha1 $d" "sha1|$vexa sha1 $d" "sha1sum|sha1sum $d"
  "md5sum|md5sum $d" "md5|$vexa md5 $d"
  "base64-w0|base64 -w0 $d" "base64|$vexa base64 $d" "escape|$vexa escape $d" "url_encode|$vexa url_encode $d"
  "base64-d|base64 -d $d.b64" "unbase64|$vexa unbase64 $d.b64" "url_decode|$vexa url_decode $d.url"
)
# The vexa rows: LABEL|TOOL|GOAL (the greatest ratio of medians wanted, or -).
rows=(
  "sha256|openssl-sha256|0.95" "sha256|sha256sum|-" "sha1|openssl-sha1|0.95" "sha1|sha1sum|-" "md5|md5sum|1.0"
  "base64|base64-w0|-" "base64|cat|2.0" "unbase64|base64-d|-" "unbase64|cat-b64|3.0"
  "escape|cat|5.0" "escape-text|cat-text|2.5" "url_encode|cat|-" "url_encode-text|cat-text|4.0"
  "url_decode|cat-url|-" "url_decode-text|cat-text-url|4.0"
)

# What vexa prints, checked once against the tools (escape is left to the tests).
with_line_feed() { "$@"; echo; }
check() {
  if cmp -s <("$@") "$tmp/out"; then echo same; else echo DIFFERENT; fi
}
declare -A verdict
"$vexa" sha256 "$d" >"$tmp/out"; verdict[sha256]=$(check sh -c "openssl dgst -sha256 -r '$d' | cut -d' ' -f1")
"$vexa" sha1 "$d" >"$tmp/out"; verdict[sha1]=$(check sh -c "openssl dgst -sha1 -r '$d' | cut -d' ' -f1")
"$vexa" md5 "$d" >"$tmp/out"; verdict[md5]=$(check sh -c "md5sum '$d' | cut -d' ' -f1")
"$vexa" base64 "$d" >"$tmp/out"; verdict[base64]=$(check with_line_feed base64 -w0 "$d")
"$vexa" unbase64 "$d.b64" >"$tmp/out"; verdict[unbase64]=$(check with_line_feed cat "$d")
"$vexa" url_decode "$d.url" >"$tmp/out"; verdict[url_decode]=$(check with_line_feed cat "$d")
verdict[url_encode]=${verdict[url_decode]}  # data.url is vexa's encoding, decoded back above
"$vexa" url_decode "$t.url" >"$tmp/out"; verdict[url_decode-text]=$(check with_line_feed cat "$t")
verdict[url_encode-text]=${verdict[url_decode-text]}

# unbase64 writes what it decodes to a temporary file: the disk must not be busy
# writing back the gigabyte of files made above while it does.
rm -f "$tmp/out"
sync

for ((round = 1; round <= rounds; ++round)); do
  for entry in "${commands[@]}"; do
    read -r -a words <<<"${entry#*|}"
    measure "${entry%%|*}" "${words[@]}"
  done
done

printf '%-16s %8s %9s   %-15s %8s %9s %7s %5s  %s\n' "256 MiB" "median s" "peak MiB" "beside" "median s" "peak MiB" \
  ratio goal output
for row in "${rows[@]}"; do
  IFS='|' read -r label tool goal <<<"$row"
  mine=$(median "$tmp/$label.wall") theirs=$(median "$tmp/$tool.wall")
  printf '%-16s %8s %9s   %-15s %8s %9s %6.2fx %5s  %s\n' "$label" "$mine" "$(peak_mib "$tmp/$label.mem")" \
    "$tool" "$theirs" "$(peak_mib "$tmp/$tool.mem")" "$(awk "BEGIN { print $mine / $theirs }")" "$goal" \
    "${verdict[$label]:--}"
done
echo "($rounds rounds; the ratio is vexa's median wall time over the tool's)"
