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
    # The sanitizers slow the processes down, not the clocks that the tests judge them by.
    export VELATRA_TEST_SLOWNESS=4
    install_packages "${CHECK_PACKAGES[@]}"
    echo "== floors"
    python3 tools/floors.py
    echo "== style"
    git ls-files -z '*.cpp' '*.h' | xargs -0 clang-format --dry-run --Werror
    echo "== address and undefined behaviour sanitizers"
    build_preset asan
    run_tests asan
    echo "== thread sanitizer"
    build_preset tsan
    run_tests tsan
    run_fuzzers 20
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
    cmake --preset debug >/dev/null
    git diff --name-only --diff-filter=d "$base" -- 'src/*.cpp' 'standin/*.cpp' 'tools/*.cpp' |
        xargs -r -P2 -n4 clang-tidy -p build/debug --quiet
}

run_fuzzers() {  # seconds each
    setup
    install_packages "${CHECK_PACKAGES[@]}"
    build_preset fuzz fuzzers
    local fuzzer corpus
    for fuzzer in build/fuzz/fuzz/*_fuzz; do
        # Absolute: some fuzzers change into a folder of their own.
        corpus=$PWD/build/fuzz/corpus/$(basename "$fuzzer")
        mkdir -p "$corpus"
        echo "== $(basename "$fuzzer"), $1 s"
        (cd build/fuzz && "../../$fuzzer" -max_total_time="$1" -timeout=10 -rss_limit_mb=4096 -print_final_stats=1 \
            "$corpus" 2>&1 | grep -E 'ERROR|SUMMARY|stat::number_of_executed_units|runtime error' ; exit "${PIPESTATUS[0]}")
    done
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
fuzz) run_fuzzers "${1:-60}" ;;
*)
    usage
    [ "$command" = help ]
    ;;
esac
