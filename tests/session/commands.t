The utility commands as a black box: $VEXA is the program under test; each runs a command once per further
argument, outputs on one line, and r runs a session on its input, each prompt shown as "| ".

  $ set -o pipefail; vexa() { "$VEXA" "$@"; }; each() { for a in "${@:2}"; do vexa $1 "$a"; done | paste -sd ' '; }
  $ r() { vexa | tail -n +3 | sed 's/> /| /g'; echo; }

hex reads a decimal and unhex a hexadecimal 32-bit integer as strtol does, clamped.

  $ each hex -1 '' 010 0x10 99999999999 -99999999999; each unhex 0x10 -a ffffffff -ffffffff xyz
  ffffffff 0 a 0 7fffffff 80000000
  16 -10 2147483647 -2147483648 0

The digests and escape read the file the argument names (a missing file or a directory as empty); the codings
take the text if no file has its name.

  $ printf 'notes\n' > 'my notes.txt'; printf '\0\377hi\n' > hello; mkdir dir; mkfifo fifo
  $ vexa md5 my notes.txt; vexa sha1 my notes.txt; vexa sha256 my notes.txt; each md5 x dir '' | tr ' ' '\n' | uniq -c
  9c345463e1fec644c6eee8e6158d953f
  b9350f295d01cbab7589bc1c6850a621e86992ed
  444e0fffbd825e9610ff5b199485707a0c895339ae80c15cc8a8aee41b106fda
        3 d41d8cd98f00b204e9800998ecf8427e
  $ printf "$(printf '\\%03o' $(seq 0 255))" > bytes; vexa escape bytes; vexa url_encode bytes
  \0\x01\x02\x03\x04\x05\x06\x07\b\t\n\x0b\f\r\x0e\x0f\x10\x11\x12\x13\x14\x15\x16\x17\x18\x19\x1a\x1b\x1c\x1d\x1e\x1f !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`abcdefghijklmnopqrstuvwxyz{|}~\x7f\x80\x81\x82\x83\x84\x85\x86\x87\x88\x89\x8a\x8b\x8c\x8d\x8e\x8f\x90\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9a\x9b\x9c\x9d\x9e\x9f\xa0\xa1\xa2\xa3\xa4\xa5\xa6\xa7\xa8\xa9\xaa\xab\xac\xad\xae\xaf\xb0\xb1\xb2\xb3\xb4\xb5\xb6\xb7\xb8\xb9\xba\xbb\xbc\xbd\xbe\xbf\xc0\xc1\xc2\xc3\xc4\xc5\xc6\xc7\xc8\xc9\xca\xcb\xcc\xcd\xce\xcf\xd0\xd1\xd2\xd3\xd4\xd5\xd6\xd7\xd8\xd9\xda\xdb\xdc\xdd\xde\xdf\xe0\xe1\xe2\xe3\xe4\xe5\xe6\xe7\xe8\xe9\xea\xeb\xec\xed\xee\xef\xf0\xf1\xf2\xf3\xf4\xf5\xf6\xf7\xf8\xf9\xfa\xfb\xfc\xfd\xfe\xff
  %00%01%02%03%04%05%06%07%08%09%0A%0B%0C%0D%0E%0F%10%11%12%13%14%15%16%17%18%19%1A%1B%1C%1D%1E%1F%20!%22#$%25&'()*+,-./0123456789:;%3C=%3E?@ABCDEFGHIJKLMNOPQRSTUVWXYZ%5B%5C%5D%5E_%60abcdefghijklmnopqrstuvwxyz%7B%7C%7D~%7F%80%81%82%83%84%85%86%87%88%89%8A%8B%8C%8D%8E%8F%90%91%92%93%94%95%96%97%98%99%9A%9B%9C%9D%9E%9F%A0%A1%A2%A3%A4%A5%A6%A7%A8%A9%AA%AB%AC%AD%AE%AF%B0%B1%B2%B3%B4%B5%B6%B7%B8%B9%BA%BB%BC%BD%BE%BF%C0%C1%C2%C3%C4%C5%C6%C7%C8%C9%CA%CB%CC%CD%CE%CF%D0%D1%D2%D3%D4%D5%D6%D7%D8%D9%DA%DB%DC%DD%DE%DF%E0%E1%E2%E3%E4%E5%E6%E7%E8%E9%EA%EB%EC%ED%EE%EF%F0%F1%F2%F3%F4%F5%F6%F7%F8%F9%FA%FB%FC%FD%FE%FF
  $ each base64 hello x; each unbase64 QQBC Zm9vY; vexa url_encode a b/c; vexa url_decode 'a+b%21'
  AP9oaQo= eA==
  A Warning: input string length not multiple of 4. foo
  a%20b/c
  a+b!

No command keeps a file open: with 12 descriptors, forty opens still work.

  $ echo 'show 1' > t.frm; (ulimit -n 12; printf 'base64 hello\nt.frm\n%.0s' $(seq 20) | r | tail -n 3)
  | AP9oaQo=
  | 1 = 1
  | 

comma and the times take a variable's value, or else the text or its number; gmtime ignores the zone.

  $ each comma 1234567 123456 pi sin ' 1000' -1234.5; printf '1234567\ncomma\n' | r
  1,234,567 123,456 3.14159 0 1,000 -1,234.5
  | ans = 1234567
  | 1,234,567
  | 
  $ TZ=UTC-2 vexa gmtime abc; vexa gmtime | grep -c "^$(date -u +%Y)-"; printf '1000000000\nlocaltime ans\n' | TZ=UTC-2 r
  1970-01-01 00:00:00 AM Thu
  1
  | ans = 1000000000
  | 2001-09-09 03:46:40 AM Sun
  | 
  $ TZ=UTC-2 vexa localtime 0; TZ=CET-1CEST,M3.5.0,M10.5.0/3 each localtime 1234567890 1000040000
  1970-01-01 02:00:00 AM Thu
  2009-02-14 00:31:30 AM Sat 2001-09-09 02:53:20 PM Sun
  $ vexa uuid
  [0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12} (re)

verify walks a SHA-256 chain from its start to its end, and finds the ends the ten-second benchmark prints.

  $ a=abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRTUVWXY346789abcdefghijkm; z=$a
  $ for i in $(seq 100); do z=$(printf %s "$z" | sha256sum | cut -c1-64); done
  $ vexa verify "$a:$z"; vexa verify "$a:$a"; each verify '' "$a:${z}0" "$a;$z" "$a:${z^^}"
  Found after 100 hashes in ~[01] seconds. (re)
  ~100 hashes per second
  Found after 0 hashes in ~0 seconds.
  ~0 hashes per second
  Invalid benchmark string. Invalid benchmark string. Invalid benchmark string. Invalid benchmark string.
  $ vexa bench | tee run
  [a-km-np-zA-HJ-NP-RT-Y346789]{64} (re)
  [0-9a-f]{64} (re)
  [1-9]\d{0,2}(,\d{3})* hashes per second (re)
  $ vexa verify "$(sed -n 1p run):$(sed -n 2p run)" | tee verified
  Found after [1-9]\d{0,2}(,\d{3})* hashes in ~\d+ seconds\. (re)
  ~(0|[1-9]\d{0,2}(,\d{3})*) hashes per second (re)
  $ tr -d ',~' < verified | awk '{ n = n ? n : $3; s = s ? s : $6 } END { print $1 == int(n / s) }'
  1

Nothing lost, nothing hanging. A FIFO waits for its writer, however late, and its bytes are read, formula files
too; so does a file under a write lease, until its holder lets go.

  $ vexa sha256 fifo & printf hi > fifo; wait; vexa base64 fifo & printf hi > fifo; wait
  8f434346648f6b96df89dda901c5176b10a6d83961dd3c1ac88b59b2dc327aa4
  aGk=
  $ mkfifo late.frm; vexa late.frm & printf 'show 6*7\n' > late.frm; wait
  6*7 = 42
  $ printf old > leased; timeout 60 python3 -c '
  > import fcntl, os, signal
  > fd = os.open("leased", os.O_RDWR)
  > def let_go(*_):  # the holder writes before it lets go
  >     os.ftruncate(fd, 0); os.pwrite(fd, b"new", 0)
  >     fcntl.fcntl(fd, fcntl.F_SETLEASE, fcntl.F_UNLCK)
  > signal.signal(signal.SIGIO, let_go)
  > fcntl.fcntl(fd, fcntl.F_SETLEASE, fcntl.F_WRLCK)
  > print("held", flush=True)
  > signal.pause()' | (read held; vexa md5 leased); printf new | md5sum
  22af645d1859cb5ca6da0c484f1f37ea
  22af645d1859cb5ca6da0c484f1f37ea  -

unbase64 reads its input once and prints nothing before its end, so a file that shrinks while the output is read
changes nothing; when the decoded bytes cannot wait in a temporary file (here a file-size limit), they wait in
memory.

  $ head -c 1500000 /dev/zero | tr '\0' '\1' | base64 -w0 > ones; printf A >> ones
  $ (ulimit -f 64; vexa unbase64 /dev/stdin < ones | tail -n 1 | wc -c)
  1500001
  $ vexa unbase64 ones | (head -n 1; truncate -s 0 ones; tr -d '\1' | od -c)
  Warning: input string length not multiple of 4.
  0000000  \n
  0000001

A line too long for the memory there is fails, whether it is too long to read or to evaluate, or its command has
no room for its output, and the session goes on. (Builds with sanitizers or under an emulator cannot run within
an address-space limit: they show the answer alone.)

  $ limited() { if [ "$VEXA_LIMITS" = no ]; then printf '| Out of memory\n| Out of memory\n| Out of memory\n| ans = 2\n| \n'; else (ulimit -v 100000; "$@"); fi; }
  $ lines() { head -c 150000000 /dev/zero | tr '\0' 1; echo; head -c 20000000 /dev/zero | tr '\0' 1 | sed 's/11/1+/g'; printf "1\nurl_encode %30000000s\n1+1\n"; }
  $ limited bash -c "$(declare -f lines r); vexa() { \"\$VEXA\"; }; lines | r"
  | Out of memory
  | Out of memory
  | Out of memory
  | ans = 2
  | 

Standard input that another program made non-blocking is waited for, not taken for its end; output that can no
longer be written (a full disk, a closed pipe with SIGPIPE ignored) ends the session at once, with status 0 and
no message.

  $ timeout 60 python3 -c '
  > import fcntl, os, subprocess
  > r, w = os.pipe()
  > fcntl.fcntl(r, fcntl.F_SETFL, os.O_NONBLOCK)
  > vexa = subprocess.Popen([os.environ["VEXA"]], stdin=r, stdout=subprocess.PIPE)
  > os.write(w, b"1+1\n")
  > out = b""
  > while b"ans = 2" not in out: out += os.read(vexa.stdout.fileno(), 99)
  > os.write(w, b"2+2\n"); os.close(w)
  > print(out + vexa.stdout.read())'
  b"Type 'help' for help.\n\n> ans = 2\n> ans = 4\n> "
  $ yes 1+1 | vexa > /dev/full; echo ${PIPESTATUS[1]}; yes | vexa base64 /dev/stdin > /dev/full; echo ${PIPESTATUS[1]}
  0
  0
  $ trap '' PIPE; (yes 1+1 2>&- | vexa; echo ${PIPESTATUS[1]} > status) | head -c 9; echo; cat status
  Type 'hel
  0
  $ (yes 2>&- | vexa escape /dev/stdin) | head -c 8; echo
  y\ny\ny\
  $ head -c 3000000 /dev/zero | tr '\0' '\1' | base64 -w0 > held
  $ ((echo unbase64 held; yes 1+1) 2>&- | vexa; echo ${PIPESTATUS[1]} > status) | head -c 27 | tail -c 4 | od -An -c; cat status
     >     001 001
  0
