Formula files as a black box: $VEXA is the program under test; f writes its first
argument (printf's format) to f.frm and runs it with the others, and r runs a
session on its input, showing each prompt as "| ".

  $ set -o pipefail; vexa() { "$VEXA" "$@"; }; f() { printf "$1" > f.frm; vexa f.frm "${@:2}"; }
  $ r() { vexa | tail -n +3 | sed 's/> /| /g'; echo; }

Lines are trimmed; blank lines and comments are skipped but counted; errors name
the file as typed and go on. CR LF ends a line like LF, and so does the end.

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
  

print puts values in place of &name up to the next blank, whole values in full;
a reference that fails stays as written.

  $ f 'x = 1234567\nprint x = &x\nshow x\nx = 2.5\nprint &x. (&x) &x . &x&x &x*3 &y=5 &y 50& a & b\nprint\nprint  a  b'
  x = 1234567
  x = 1.23457e+06
  &x. (&x) 2.5 . &x2.5 7.5 5 5 50& a & b
  
   a  b

Arguments are evaluated, or else read by strtod, and bound to the prompts in
order; each prompt left reads its answer with strtod, 0 at the end of input.

  $ f 'prompt a\nprompt b\nprompt c\nprompt d\nprompt e\nprompt g\nshow a+b+c+d+e+g+y' ' pi' -2.5  abc 1e3 0x10 5abc y=7 q
  a+b+c+d+e+g+y = 1028.64
  $ f 'prompt a\nprompt b\nprompt c\nprompt\nshow a+b+c' 7 < <(printf '2*3\r\nx\n')
  b = ? c = ?  = ? a+b+c = 9

A file works in the session's variables, and its prompts read the session's input.

  $ printf 'prompt a\nshow k*a\nb = 2\n' > g.frm; printf 'k = 4\ng.frm\n5\nb\n' | r
  | ans = 4
  | a = ? k*a = 20
  | ans = 2
  | 
