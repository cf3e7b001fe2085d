#!/usr/bin/env bash
# Times vexa's digests against the system's tools on one 256 MiB file, then runs
# the Google Benchmark program (hash-chain step and in-memory throughput).
# Usage: bench/digests.sh   (from anywhere; builds into build-bench/)
set -euo pipefail

source "$(dirname "$0")/build.sh" digest_bench digest_file

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
file=$tmp/data
mib=256
head -c $((mib << 20)) /dev/urandom >"$file"
cat "$file" >/dev/null  # every run reads from the page cache

# seconds COMMAND...: "wall user sys" seconds of one run; its first output word
# goes to $tmp/out. MB/s is taken from user + sys, which other load on the
# machine disturbs less than the wall clock.
seconds() {
  local TIMEFORMAT='%R %U %S'
  { time "$@" | cut -d' ' -f1 >"$tmp/out"; } 2>&1
}

printf '%-24s %7s %7s %7s %8s  %s\n' "command ($mib MiB)" wall user sys "MB/s" digest
# run LABEL COMMAND...: one table row.
run() {
  local label=$1 wall user sys
  shift
  read -r wall user sys < <(seconds "$@")
  printf '%-24s %7s %7s %7s %8.0f  %s\n' "$label" "$wall" "$user" "$sys" \
    "$(awk "BEGIN { print $mib * 1.048576 / ($user + $sys) }")" "$(cat "$tmp/out")"
}
for algo in sha256 sha1 md5; do
  run "${algo}sum" "${algo}sum" "$file"
  run "openssl dgst -$algo" openssl dgst "-$algo" -r "$file"
  run "vexa $algo" "$build/bench/digest_file" "$algo" "$file"
  if [ "$algo" != md5 ]; then
    run "vexa $algo (portable)" "$build/bench/digest_file" "$algo/portable" "$file"
  fi
done

echo
"$build/bench/digest_bench" --benchmark_min_time=2 2>&1
