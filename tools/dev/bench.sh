# The benchmarks, in full or in short form. Sourced by ./dev.

# expect_benchmarks [--short] [NAME...]: there is each that is named.
expect_benchmarks() {
    local name
    [ "${1-}" != --short ] || shift
    for name in "$@"; do
        expect_file benchmark "$name" "bench/$(basename "$name" .py).py"
    done
}

# run_benchmarks PRESET [--short] [NAME...]: all when none is named. Goes on after one that fails.
run_benchmarks() {
    local preset=$1 short=() name status=0
    shift
    if [ "${1-}" = --short ]; then
        short=(--short)
        shift
    fi
    if [ $# -eq 0 ]; then
        set -- bench/*.py
    fi
    build "$preset" benchmarks || return
    for name in "$@"; do
        name=$(basename "$name" .py)
        PYTHONDONTWRITEBYTECODE=1 python3 "bench/$name.py" "build/$preset" "${short[@]}" || status=1
    done
    return "$status"
}
