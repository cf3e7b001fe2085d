The ten-second benchmark, whose strings verify then finds on the chain; $VEXA is
the program under test.

  $ "$VEXA" bench | tee run
  [a-km-np-zA-HJ-NP-RT-Y346789]{64} (re)
  [0-9a-f]{64} (re)
  [1-9]\d{0,2}(,\d{3})* hashes per second (re)
  $ "$VEXA" verify "$(sed -n 1p run):$(sed -n 2p run)" | tee verified
  Found after [1-9]\d{0,2}(,\d{3})* hashes in ~\d+ seconds\. (re)
  ~(0|[1-9]\d{0,2}(,\d{3})*) hashes per second (re)
  $ tr -d ',~' < verified | awk '{ n = n ? n : $3; s = s ? s : $6 } END { print $1 == int(n / s) }'
  1
