# ./dev bench: builds the benchmarks and runs them one by one. Sourced by ./dev.

# run_benchmarks [NAME...]: all when none is named. Goes on after one that misses its bar.
run_benchmarks() {
    local name status=0
    if [ $# -eq 0 ]; then
        set -- bench/*.py
    fi
    for name in "$@"; do
        name=$(basename "$name" .py)
        PYTHONDONTWRITEBYTECODE=1 python3 "bench/$name.py" build/bench || status=1
    done
    return "$status"
}
