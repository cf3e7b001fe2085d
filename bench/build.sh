# Sourced by the benchmark scripts with the targets they need: builds them in
# release mode in build-bench/ and sets root, build and vexa.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build-bench
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DVEXA_BENCH=ON -DBUILD_TESTING=OFF >/dev/null
cmake --build "$build" -j2 --target "$@" >/dev/null
vexa=$build/vexa
