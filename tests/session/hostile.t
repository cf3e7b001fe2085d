Huge lines, deep nesting and every byte after every command word, in the session
and in a formula file. $VEXA is the program under test; r runs a session on its
input, showing each prompt as "| ".

  $ set -o pipefail; vexa() { "$VEXA" "$@"; }; r() { vexa | tail -n +3 | sed 's/> /| /g'; echo; }
  $ n() { printf "%$2s" '' | tr ' ' "$1"; }; big() { n + 5242880 | sed 's/+/1+/g'; echo 1; }
  $ big | r; { printf 'x = '; big; echo 'print &x'; } > big.frm; vexa big.frm
  | ans = 5242881
  | 
  5242881
  $ { n '(' 100000; printf 7; n ')' 100000; echo; n '(' 100000; echo; n + 100000; echo; } | r | grep .
  | ans = 7
  | Input does not evaluate to a single expression.
  | Unexpected character at position 0: '+'
  | 
  $ for w in '' hex unhex md5 escape base64 unbase64 url_encode url_decode comma gmtime verify 1.frm; do
  >   for c in $(seq 1 255); do printf "$w \\$(printf %03o $c)1\n"; done; done > bytes.frm
  $ { cat bytes.frm; echo quit; } | r | tail -n 2; vexa bytes.frm | grep -a ', line' | tail -n 1
  | Bye!
  
  bytes.frm, line 3328: Unexpected character at position 2: 'f'
