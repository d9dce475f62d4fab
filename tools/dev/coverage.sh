# ./dev coverage: what the tests of the core reach of it, by clang's own counters. They stand at
# the conditions of the source: what a compiler makes of exceptions and destructors does not come up,
# unlike in the counters of machine code. Sourced by ./dev.

tell_coverage() {
    local folder=build/coverage tests=build/coverage/bin/core_tests
    build coverage core_tests || return
    # In one process: thousands would each write a profile.
    LLVM_PROFILE_FILE=$folder/core.profraw "$tests" --gtest_brief=1 >"$folder/core_tests.log" || {
        cat "$folder/core_tests.log"
        return 1
    }
    llvm-profdata-14 merge -sparse -o "$folder/core.profdata" "$folder/core.profraw" || return
    llvm-cov-14 export -skip-functions -skip-expansions -compilation-dir "$PWD/$folder" \
        -instr-profile "$folder/core.profdata" "$tests" >"$folder/coverage.json" || return
    PYTHONDONTWRITEBYTECODE=1 python3 tools/dev/coverage.py "$folder/coverage.json"
}
