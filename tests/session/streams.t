The file commands read a pipe to its end and a FIFO without a writer as empty at
once; inputs of many blocks give what the system's tools give.

  $ vexa() { "$VEXA" "$@"; }
  $ printf hi | vexa sha256 /dev/stdin; vexa base64 <(printf hi); vexa md5 /dev/stdin < /dev/null
  8f434346648f6b96df89dda901c5176b10a6d83961dd3c1ac88b59b2dc327aa4
  aGk=
  d41d8cd98f00b204e9800998ecf8427e
  $ printf 'a"\0\n\377' | vexa escape /dev/stdin; mkfifo fifo; vexa base64 fifo; vexa sha1 fifo; vexa unbase64 fifo
  a\"\0\n\xff
  
  da39a3ee5e6b4b0d3255bfef95601890afd80709
  

  $ python3 - <<'EOF'
  > import base64, urllib.parse
  > data = bytes((i * 131 + (i >> 7)) % 255 + 1 for i in range(700001))  # no zero byte
  > open("data", "wb").write(data)
  > open("quoted", "wb").write(urllib.parse.quote(data, safe=";,/?:@&=+$#!*'()").encode())
  > open("text", "wb").write(base64.b64encode(data))
  > EOF
  $ vexa sha256 /dev/stdin < data | cmp - <(sha256sum < data | cut -c1-64) && echo same
  same
  $ vexa url_encode /dev/stdin < data | cmp - <(cat quoted; echo) && echo same
  same
  $ vexa url_decode /dev/stdin < quoted | cmp - <(cat data; echo) && echo same
  same

unbase64's warning comes first, though only the pipe's end tells it is due, and a
zero byte ends the text.

  $ (cat text; printf QUE) | vexa unbase64 /dev/stdin | cmp - <(echo 'Warning: input string length not multiple of 4.'; cat data; echo) && echo same
  same
  $ (cat text; printf 'QUFB\0Q'; cat text) | vexa unbase64 /dev/stdin | cmp - <(cat data; echo AAA) && echo same
  same
