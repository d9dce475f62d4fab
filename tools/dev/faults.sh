# ./dev faults: the tests of docs/reliability.md as often as it says. Sourced by ./dev.

# The name as it stands in that of the test.
fault_named() {
    local name=${1%.py}
    echo "${name%_test}"
}

# expect_faults [NAME...]: there is each that is named.
expect_faults() {
    local name
    for name in "$@"; do
        name=$(fault_named "$name")
        [ "$name" = RelaunchStorm ] || expect_file fault "$name" "tests/e2e/faults/${name}_test.py"
    done
}

# run_faults PRESET [NAME...]: all when none is named. A name is that of a file in tests/e2e/faults,
# with or without "_test" and ".py", or RelaunchStorm.
run_faults() {
    local preset=$1 programs='.*' parts=RelaunchStorm
    shift
    if [ $# -gt 0 ]; then
        local names=() name
        for name in "$@"; do names+=("$(fault_named "$name")"); done
        programs=$(IFS='|' && echo "${names[*]}")
        parts=$programs
    fi
    VALDORN_FAULTS=full run_tests "$preset" --verbose \
        --tests-regex "^e2e\\.faults\\.($programs)_test\$|^posix\\.($parts)Test\\."
}
