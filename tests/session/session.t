The session as a black box. $VEXA is the program under test; r runs a session on
its input, cuts the greeting and shows each prompt as "| "; s pipes its arguments
into r as lines.

  $ set -o pipefail; vexa() { "$VEXA" "$@"; }; r() { vexa | tail -n +3 | sed 's/> /| /g'; echo; }
  $ s() { printf '%s\n' "$@" | r; }

Arguments are joined by single blanks and run once, without greeting or prompt.
Piped lines lose their carriage returns; empty lines are skipped, a last line
without line feed is run; quit stops reading, and so does unreadable input.

  $ vexa a '' b; vexa quit; printf '1+1\r\n\n2\r+2' | vexa | sed 's/> /| /g'
  Unexpected character at position 3: 'b'
  
  Bye!
  Type 'help' for help.
  
  | ans = 2
  | | ans = 4
  $ s quit 1+1; r < .
  | Bye!
  
  | 

Commands are whole lines or first words, compared exactly; other lines are
expressions. A first word ending in .frm, in any case, names a formula file, which
must be a file that can be read: no directory, FIFO or socket.

  $ mkdir d.frm; mkfifo p.frm; python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind("s.frm")'
  $ s 'help ' 'quit ' 'uuid x' 'bench x' frm X.fRM .frm d.frm p.frm s.frm | grep .
  | Unknown identifier: help
  | Unknown identifier: quit
  | Unexpected character at position 5: 'x'
  | Unexpected character at position 6: 'x'
  | Unknown identifier: frm
  | File not found: X.fRM
  | File not found: .frm
  | File not found: d.frm
  | File not found: p.frm
  | File not found: s.frm
  | 
  $ vexa help | sha256sum; vexa formula | sha256sum
  faeb67da8c75c17d8ffae6229f0f40359b6f131ce76b8979627b8b808dbcf996  -
  495f1ba91374478f568c5c26df42795cef51e00b42637890fe32f262664c9c53  -
  $ s 'x = 5' 'debug on' reset 1 'debug off' x
  | ans = 5
  | | | [0][0](1) = 2
  [2][8]( ) = 5
  (1.000000,'',\x00) (esc)
  ans = 1
  | | Unknown identifier: x
  | 

inf*0 gives the platform's own NaN, printed as its C library spells it; a falling
product that meets inf*0 on its way gives that same NaN.

  $ nan=$(vexa '(1/0)*0'); echo "$nan"
  ans = -?nan (re)
  $ for e in '171!-1' '(1/0)!-1' '171!-5' '171!0'; do vexa "$e"; done | sed "s/^$nan\$/<inf*0>/"
  <inf*0>
  <inf*0>
  <inf*0>
  ans = inf
