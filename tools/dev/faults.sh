# ./dev faults: the tests of tests/e2e/faults as often as docs/reliability.md says. Sourced by ./dev.

# run_faults PRESET [NAME...]: all when none is named.
run_faults() {
    local preset=$1 names
    shift
    names=$(IFS='|' && echo "${*:-.*}")
    VALDORN_FAULTS=full run_tests "$preset" --verbose --label-regex '^faults$' \
        --tests-regex "^e2e\\.faults\\.($names)(_test)?\$"
}
