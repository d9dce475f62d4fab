# ./dev fuzz. Sourced by ./dev.

# fuzz [SECONDS [TARGET...]]: all when none is named.
fuzz() {
    build fuzz fuzz_targets || return
    PYTHONDONTWRITEBYTECODE=1 python3 tools/dev/fuzz.py build/fuzz "$@"
}
