# ./dev faults: the tests of docs/reliability.md as often as it says. Sourced by ./dev.

# run_faults PRESET [NAME...]: all when none is named. A name is that of a file in tests/e2e/faults,
# with or without "_test" and ".py", or RelaunchStorm.
run_faults() {
    local preset=$1 programs='.*' parts=RelaunchStorm
    shift
    if [ $# -gt 0 ]; then
        set -- "${@%.py}"
        set -- "${@%_test}"
        programs=$(IFS='|' && echo "$*")
        parts=$programs
    fi
    VALDORN_FAULTS=full run_tests "$preset" --verbose \
        --tests-regex "^e2e\\.faults\\.($programs)_test\$|^posix\\.($parts)Test\\."
}
