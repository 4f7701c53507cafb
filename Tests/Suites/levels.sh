#!/bin/sh
# Compares the results of all CPU levels, and runs the tests on each lower level.
# levels.sh HASHES TESTS LEVEL...   the levels from low to high, the lowest being the base library
set -eu
hashes=$1 tests=$2
shift 3
loader=$(ldd "$hashes" | grep -o '/[^ ]*ld-linux[^ ]*')

# The library that a mask leads to: its level, or "base".
library() {
  "$loader" --glibc-hwcaps-mask "$1" "$hashes" --library | grep -o 'x86-64-v[0-9]' || echo base
}

expected=$("$loader" --glibc-hwcaps-mask none "$hashes")
[ "$(library none)" = base ] || { echo "the mask doesn't lead to the base library"; exit 1; }
"$loader" --glibc-hwcaps-mask none "$tests" --gtest_brief=1
compared=1
for level in "$@"; do
  if ! "$loader" --help | grep -q "$level (supported"; then
    echo "$level: not on this processor"
    continue
  fi
  [ "$(library "$level")" = "$level" ] || { echo "$level isn't loaded"; exit 1; }
  if [ "$("$loader" --glibc-hwcaps-mask "$level" "$hashes")" != "$expected" ]; then
    echo "$level: other results than the base library"
    exit 1
  fi
  "$loader" --glibc-hwcaps-mask "$level" "$tests" --gtest_brief=1
  compared=$((compared + 1))
done
echo "$compared levels agree on $(echo "$expected" | wc -l) results"
