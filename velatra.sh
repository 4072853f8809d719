#!/usr/bin/env bash
# One door to everything: see usage below.
set -euo pipefail
cd "$(dirname "$0")"

usage() {
    cat <<'TEXT'
usage: ./velatra.sh COMMAND
  setup              install what the build needs (Debian packages)
  build              build the release and its install tree, build/install
  test               build and run all tests
  demo [--seconds N] the stand-in world and Velatra together; picture and summary in build/demo
  check              tests under the sanitizers, fuzzers, style
  bench              the budgets beside what was measured
  fuzz [SECONDS]     every fuzzer, 60 s each unless told
TEXT
}

PACKAGES=(g++ cmake ninja-build pkg-config libpugixml-dev nlohmann-json3-dev libcurl4-openssl-dev libzip-dev libfmt-dev
    libasio-dev libcli11-dev libcpp-httplib-dev libgtest-dev libgmock-dev libbenchmark-dev librsvg2-bin python3)
CHECK_PACKAGES=(clang libclang-rt-14-dev clang-format clang-tidy)

install_packages() {
    local missing=()
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "installing ${missing[*]}"
    local root=()
    [ "$(id -u)" = 0 ] || root=(sudo)
    "${root[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

build_preset() {  # preset, targets...
    local preset=$1
    shift
    cmake --preset "$preset" >/dev/null
    cmake --build "build/$preset" "${@:+--target}" "$@"
}

setup() { install_packages "${PACKAGES[@]}"; }

build() {
    setup
    build_preset release
    cmake --install build/release --prefix build/install >/dev/null
}

run_tests() {  # preset, ctest arguments...
    local preset=$1
    shift
    ctest --test-dir "build/$preset" --output-on-failure -j2 "$@"
}

check() {
    setup
    install_packages "${CHECK_PACKAGES[@]}"
    # The sanitizers slow the processes down, not the clocks that the tests judge them by.
    export VELATRA_TEST_SLOWNESS=4
    echo "== floors"
    python3 tools/floors.py
    echo "== style"
    git ls-files -z '*.cpp' '*.h' | xargs -0 clang-format --dry-run --Werror
    echo "== address and undefined behaviour sanitizers"
    build_preset asan
    run_tests asan
    echo "== thread sanitizer, and the fuzzers beside it"
    build_preset tsan
    # The tests of the processes mostly wait, the fuzzers never do.
    local failed=0
    run_fuzzers 20 >build/asan/fuzzers.log 2>&1 &
    run_tests tsan || failed=1
    wait $! || failed=1
    cat build/asan/fuzzers.log
    [ $failed = 0 ]
    tidy
}

# clang-tidy over what changed since the branch left origin/main, or over everything in the last commit.
tidy() {
    echo "== clang-tidy on changed files"
    local base
    base=$(git merge-base HEAD origin/main 2>/dev/null || true)
    if [ -z "$base" ] || [ "$base" = "$(git rev-parse HEAD)" ]; then
        base=$(git rev-parse HEAD~1 2>/dev/null || git hash-object -t tree /dev/null)
    fi
    cmake --preset asan >/dev/null
    git diff --name-only --diff-filter=d "$base" -- 'src/*.cpp' 'standin/*.cpp' 'tools/*.cpp' |
        xargs -r -P2 -n1 clang-tidy -p build/asan --quiet
}

fuzz_one() {  # seconds, program
    local name corpus
    name=$(basename "$2")
    corpus=$PWD/build/asan/corpus/$name  # absolute: some fuzzers change into a folder of their own
    mkdir -p "$corpus"
    (cd build/asan && nice "$2" -max_total_time="$1" -timeout=10 -rss_limit_mb=4096 -print_final_stats=1 "$corpus" 2>&1 |
        grep -E 'ERROR|SUMMARY|stat::number_of_executed_units|runtime error' | sed "s/^/$name: /"
        exit "${PIPESTATUS[0]}")
}

run_fuzzers() {  # seconds each
    export -f fuzz_one
    printf '%s\n' "$PWD"/build/asan/fuzz/*_fuzz | xargs -P2 -I{} bash -c "fuzz_one $1 {}"
}

fuzz() {
    setup
    install_packages "${CHECK_PACKAGES[@]}"
    build_preset asan fuzzers
    run_fuzzers "$1"
}

bench() {
    setup
    build_preset bench
    build/bench/bench/velatra-bench --benchmark_format=json >build/bench/result.json
    python3 bench/budgets.py build/bench/result.json
}

command=${1:-help}
[ $# -eq 0 ] || shift
case "$command" in
setup) setup ;;
build) build ;;
test)
    build
    run_tests release
    ;;
demo)
    build
    exec python3 tools/demo.py "$@"
    ;;
check) check ;;
bench) bench ;;
fuzz) fuzz "${1:-60}" ;;
*)
    usage
    [ "$command" = help ]
    ;;
esac
