# ./dev fuzz. Sourced by ./dev.

# expect_fuzz: the same words as fuzz.
expect_fuzz() {
    local name
    expect_number "${@:1:1}"
    for name in "${@:2}"; do
        expect_file target "$name" "tests/fuzz/$name.dict"
    done
}

# fuzz [SECONDS [TARGET...]]: all when none is named.
fuzz() {
    build fuzz fuzz_targets || return
    PYTHONDONTWRITEBYTECODE=1 python3 tools/dev/fuzz.py build/fuzz "$@"
}
