# The gates beyond the tests. Sourced by ./dev. Each says what it is; the first that fails ends all.

heading() { printf '\n== %s\n' "$*"; }

check_format() {
    heading "format"
    cxx_files | xargs -0 clang-format-14 --dry-run --Werror
    # Trailing blanks and foreign line ends, which no formatter of ours looks at.
    local status=0
    git grep -nIE $'[ \t\r]+$' -- . ':!*.svg' ':!tests/fixtures' ':!tests/fuzz/corpus' || status=$?
    [ "$status" -eq 1 ]  # nothing found; more would be git's own failure
}

check_benchmarks() {
    heading "benchmarks: in short form, with the build that the tests have made"
    run_benchmarks dev --short
}

# Under valgrind an optimised program may be ten times as slow on a busy machine: so much patience.
check_heap() {
    heading "valgrind: the program on its journey, with the build that the tests have made"
    local logs=$PWD/build/dev/artefacts/valgrind
    rm -rf "$logs"
    mkdir -p "$logs"
    build dev valdorn demo_runner register_runner pidfd_send_signal
    local under="env LD_PRELOAD='$PWD/build/dev/bin/pidfd_send_signal.so'
        valgrind --quiet --leak-check=full --num-callers=40 --error-exitcode=99
        --suppressions='$PWD/tests/e2e/valgrind.supp' --log-file='$logs/%p.txt'"
    VALDORN_UNDER=$under VALDORN_PATIENCE=10 run_tests dev --tests-regex '^e2e\.journey_test$' || {
        cat "$logs"/*
        return 1
    }
}

check_tidy() {
    heading "clang: warnings, thread-safety analysis, clang-tidy"
    build tidy
}

check_threads() {
    heading "ThreadSanitizer: core and posix tests, and the simulation"
    build tsan
    run_tests tsan --label-regex '^(core|posix|simulation)$'
}

check_fuzzing() {
    heading "libFuzzer: a minute for each reader of what comes from outside"
    fuzz 60
}

check_package() {
    heading "package: desktop entry, metainfo, manual page, lintian"
    export_source_time
    make_package .
    check_package_contents
    heading "package: made again elsewhere, the same byte by byte"
    check_package_again
    heading "package: installed in a clean Debian, used and removed"
    check_installation
}

check_memory() {
    heading "AddressSanitizer and UndefinedBehaviorSanitizer: all tests but the faults and long lives"
    build asan
    run_tests asan
}

check_all() {
    check_format
    check_benchmarks
    check_heap
    check_tidy
    check_threads
    check_fuzzing
    check_package
    check_memory  # last, so that the test runner's summary ends the output
}
