# The long runs, for nights and for before a release. Sourced by ./dev.

# soak_simulation [COUNT [SEED]]: the core beside the model of its rules, on all processors. The
# seed to begin with is told, so that the same run can be made again.
soak_simulation() {
    local count=${1:-1000000} seed=${2:-$(date +%s)}
    build dev simulation_tests || return
    build/dev/bin/simulation_tests --soak="$count" --seed="$seed"
}
