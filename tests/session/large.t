A file past 4 GiB is read whole on every machine, 32-bit ones included: its size
fits no 32-bit offset, and its only bytes sit at its end, after a hole that costs
no disk.

  $ set -o pipefail; truncate -s 4G big && printf 'tail!' >> big
  $ "$VEXA" md5 big
  a37ef9312d1792bed4281939772ad827
  $ "$VEXA" base64 big | tee >(tail -c 13 >end) | md5sum; wait $!; cat end
  d708cc755a0c45a3594fb48b95a4efaf  -
  AAAAAHRhaWwh
