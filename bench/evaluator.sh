#!/usr/bin/env bash
# Times vexa's expression engine against bc: one very long line, and many short
# lines piped in as a session would read them. Both programs print every answer;
# the last answers are compared, so the benchmark also catches a wrong result.
# Usage: bench/evaluator.sh   (from anywhere; builds into build-bench/)
#
# The long line has 1,000,000 operands in blocks of ten, "1+2*3-8/4+7%4+2^2-5",
# each worth 7: integer arithmetic on which bc (scale=0) and vexa's doubles agree.
# Rates are taken from user + sys time, which other load on the machine disturbs
# less than the wall clock.
set -euo pipefail

source "$(dirname "$0")/build.sh" vexa

have_bc=1
if ! command -v bc >/dev/null; then
  have_bc=0
  echo "bc is not installed; only vexa is timed. To compare: apt-get install -y bc"
  echo
fi

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

blocks=100000
operands=$((blocks * 10))
lines=100000
awk -v n=$blocks 'BEGIN {
  for (i = 0; i < n; ++i) printf "%s1+2*3-8/4+7%%4+2^2-5", i ? "+" : ""
  print ""
}' >"$tmp/long"
awk -v n=$lines 'BEGIN { print "x = 0"; for (i = 0; i < n; ++i) print "x = x + 1" }' >"$tmp/count.vexa"
awk -v n=$lines 'BEGIN { print "x = 0"; for (i = 0; i < n; ++i) print "x = x + 1; x" }' >"$tmp/count.bc"
awk -v n=$lines 'BEGIN { for (i = 0; i < n; ++i) print "x = 2 * sin(pi / 4) + 1" }' >"$tmp/sin.vexa"
awk -v n=$lines 'BEGIN {
  print "pi = 4 * a(1)"
  for (i = 0; i < n; ++i) print "x = 2 * s(pi / 4) + 1; x"
}' >"$tmp/sin.bc"

# seconds INPUT COMMAND...: "wall user sys" seconds of one run reading INPUT;
# the output goes to $tmp/out.
seconds() {
  local input=$1 TIMEFORMAT='%R %U %S'
  shift
  { time "$@" <"$input" >"$tmp/out" 2>&1; } 2>&1
}

# The last answer printed: vexa's "ans = N" lines, or bc's last line.
last_answer() {
  grep -o 'ans = .*' "$tmp/out" | tail -n 1 | cut -c 7- || true
}
last_line() {
  tail -n 1 "$tmp/out"
}

printf '%-46s %7s %7s %7s %16s  %s\n' command wall user sys rate "last answer"
# run LABEL UNITS UNIT EXPECTED ANSWER INPUT COMMAND...: one table row; ANSWER is
# the function that picks the last answer out of the output, which must be
# EXPECTED to six significant digits (bc -l prints twenty decimals, vexa %g).
run() {
  local label=$1 units=$2 unit=$3 expected=$4 answer=$5 input=$6 wall user sys got verdict
  shift 6
  read -r wall user sys < <(seconds "$input" "$@")
  got=$("$answer")
  verdict=$(awk -v a="$got" -v b="$expected" 'BEGIN {
    d = a - b; if (d < 0) d = -d; m = b < 0 ? -b : b
    print (a != "" && d <= 5e-6 * (m > 1 ? m : 1)) ? "ok" : "WRONG"
  }')
  printf '%-46s %7s %7s %7s %16s  %s %s\n' "$label" "$wall" "$user" "$sys" \
    "$(awk "BEGIN { printf \"%.0f %s/s\", $units / ($user + $sys), \"$unit\" }")" "$got" "$verdict"
}

# bc's rows are left out when it is missing.
tool() {
  if [ $have_bc = 1 ]; then run "$@"; fi
}
tool "bc: one line of $operands operands" $operands terms $((blocks * 7)) last_line "$tmp/long" bc
run "vexa: one line of $operands operands" $operands terms $((blocks * 7)) last_answer "$tmp/long" "$vexa"
tool "bc: $lines lines \"x = x + 1; x\"" $lines lines $lines last_line "$tmp/count.bc" bc
run "vexa: $lines lines \"x = x + 1\"" $lines lines $lines last_answer "$tmp/count.vexa" "$vexa"
tool "bc -l: $lines lines \"x = 2 * s(pi / 4) + 1; x\"" $lines lines 2.41421 last_line "$tmp/sin.bc" bc -l
run "vexa: $lines lines \"x = 2 * sin(pi / 4) + 1\"" $lines lines 2.41421 last_answer "$tmp/sin.vexa" "$vexa"

# Long lines: time and peak memory beside bc, and memory over the line's length.
echo
printf '%-40s %8s %9s %8s %9s %7s %12s\n' "one line" "vexa s" "vexa MiB" "bc s" "bc MiB" ratio "MiB per MiB"
awk 'BEGIN { for (i = 0; i < 1000000; ++i) printf "%s1", i ? "+" : ""; print "" }' >"$tmp/sum"
awk 'BEGIN { for (i = 0; i < 1000000; ++i) printf "%s1.5*2", i ? "+" : ""; print "" }' >"$tmp/products"
for line in sum products; do
  /usr/bin/time -f '%e %M' -o "$tmp/vexa.time" "$vexa" <"$tmp/$line" >/dev/null
  read -r vexa_s vexa_kib <"$tmp/vexa.time"
  bc_s=- bc_kib=0 ratio=-
  if [ $have_bc = 1 ]; then
    /usr/bin/time -f '%e %M' -o "$tmp/bc.time" bc <"$tmp/$line" >/dev/null
    read -r bc_s bc_kib <"$tmp/bc.time"
    ratio=$(awk "BEGIN { printf \"%.2fx\", $vexa_s / $bc_s }")
  fi
  printf '%-40s %8s %9.1f %8s %9.1f %7s %12.1f\n' "1,000,000 terms of $(head -c 6 "$tmp/$line")..." "$vexa_s" \
    "$(awk "BEGIN { print $vexa_kib / 1024 }")" "$bc_s" "$(awk "BEGIN { print $bc_kib / 1024 }")" "$ratio" \
    "$(awk "BEGIN { print $vexa_kib * 1024 / $(stat -c %s "$tmp/$line") }")"
done
