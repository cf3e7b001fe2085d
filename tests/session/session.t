The session and formula files as a black box. $VEXA is the program under test; r runs a session on its input,
cuts the greeting and shows each prompt as "| "; s pipes its arguments into r as lines; f writes its first
argument (a printf format) to f.frm and runs that with the others.

  $ set -o pipefail; vexa() { "$VEXA" "$@"; }; r() { vexa | tail -n +3 | sed 's/> /| /g'; echo; }
  $ s() { printf '%s\n' "$@" | r; }; f() { printf "$1" > f.frm; vexa f.frm "${@:2}"; }

Arguments are joined by blanks and run once; piped lines lose their carriage returns, and quit or unreadable
input ends the session.

  $ vexa a '' b; vexa quit; printf '1+1\r\n\n2\r+2' | vexa | sed 's/> /| /g'
  Unexpected character at position 3: 'b'
  
  Bye!
  Type 'help' for help.
  
  | ans = 2
  | | ans = 4
  $ s quit 1+1; r < .
  | Bye!
  
  | 

Commands are whole lines or first words, compared exactly; a first word ending in .frm, in any case, names a
formula file that must be a readable file.

  $ mkdir d.frm; python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind("s.frm")'
  $ s 'help ' 'quit ' 'uuid x' 'bench x' frm X.fRM .frm d.frm s.frm | grep .
  | Unknown identifier: help
  | Unknown identifier: quit
  | Unexpected character at position 5: 'x'
  | Unexpected character at position 6: 'x'
  | Unknown identifier: frm
  | File not found: X.fRM
  | File not found: .frm
  | File not found: d.frm
  | File not found: s.frm
  | 
  $ vexa help | sha256sum; vexa formula | sha256sum
  faeb67da8c75c17d8ffae6229f0f40359b6f131ce76b8979627b8b808dbcf996  -
  495f1ba91374478f568c5c26df42795cef51e00b42637890fe32f262664c9c53  -
  $ s help formula 2+2 | tail -n 2
  | ans = 4
  | 
  $ s 'sin = 0' 'cos = 0' help | sed -n '/sqrt()/,/OPERATORS/p'
  \tlog()\tsqrt()\ttan() (esc)
  
  OPERATORS: in order of precedence
  $ s 'x = 5' 'sin = pi = 3' 'time = 5' time 'debug on' reset 1 'debug off' x 'sin(0) + pi'
  | ans = 5
  | ans = 3
  | ans = 5
  \| ans = \d{10} (re)
  | | | [0][0](1) = 2
  [2][8]( ) = 5
  (1.000000,'',\x00) (esc)
  ans = 1
  | | Unknown identifier: x
  | ans = 3.14159
  | 

Formula files: lines are trimmed, comments and blank lines skipped but counted.

  $ f '# a\n\n \t\n  # b\n2 3\nx = 1 # c\nx = 1\r\nshow\nshow  x\r\n  show x \nshow\tx\nPrompt x\nshow x+1' | grep .
  f.frm, line 5: Unexpected character at position 2: '3'
  f.frm, line 6: Illegal character at position 6: '#'
  f.frm, line 8: Expression does not evaluate to a single value.
   x = 1
  x = 1
  f.frm, line 11: Unexpected character at position 5: 'x'
  f.frm, line 12: Unexpected character at position 7: 'x'
  x+1 = 2
  $ printf 'prompt a\nprompt b\nshow a+b\n2 3' > Data.FRM; vexa ./Data.FRM 1 2; f ''
  a+b = 3
  ./Data.FRM, line 4: Unexpected character at position 2: '3'
  

print puts values in place of &name up to the next blank; a failing one stays.

  $ f 'x = 1234567\nprint x = &x\nshow x\nx = 2.5\nprint &x. (&x) &x . &x&x &x*3 &y=5 &y 50& a & b\nprint\nprint  a  b'
  x = 1234567
  x = 1.23457e+06
  &x. (&x) 2.5 . &x2.5 7.5 5 5 50& a & b
  
   a  b

Arguments are evaluated, or else read by strtod, and bound to the prompts in order; each prompt left reads an
answer by strtod, 0 at the end of input.

  $ f 'prompt a\nprompt b\nprompt c\nprompt d\nprompt e\nprompt g\nshow a+b+c+d+e+g+y' ' pi' -2.5  abc 1e3 0x10 5abc y=7 q
  a+b+c+d+e+g+y = 1028.64
  $ f 'prompt a\nprompt b\nprompt c\nprompt\nshow a+b+c' 7 < <(printf '2*3\r\nx\n')
  b = ? c = ?  = ? a+b+c = 9

A file works in the session's variables and reads the session's input.

  $ printf 'prompt a\nshow k*a\nb = 2\n' > g.frm; printf 'k = 4\ng.frm\n5\nb\n' | r
  | ans = 4
  | a = ? k*a = 20
  | ans = 2
  | 

Huge lines and deep nesting, in the session and in a formula file.

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
