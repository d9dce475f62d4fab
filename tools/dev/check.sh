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
    heading "AddressSanitizer and UndefinedBehaviorSanitizer: all tests but the faults"
    build asan
    # But the faults, which wait for seconds to pass: what they meet, other tests meet here as well.
    run_tests asan --label-exclude '^faults$'
}

check_all() {
    check_format
    check_benchmarks
    check_tidy
    check_threads
    check_fuzzing
    check_package
    check_memory  # last, so that the test runner's summary ends the output
}
