# The long runs, for nights and for before a release. Sourced by ./dev.

# soak_simulation [COUNT [SEED]]: the core beside the model of its rules, on all processors. The
# seed to begin with is told, so that the same run can be made again.
soak_simulation() {
    local count=${1:-1000000} seed=${2:-$(date +%s)}
    build dev simulation_tests || return
    build/dev/bin/simulation_tests --soak="$count" --seed="$seed"
}

# soak_program [SECONDS]: the finished program with ten busy runners. The samples of what it holds
# are in build/dev/artefacts/soak.
soak_program() {
    local seconds=${1:-3600}
    build dev valdorn demo_runner || return
    VALDORN_SOAK_SECONDS=$seconds run_tests dev --tests-regex '^e2e\.soak_test$' \
        --timeout $((seconds + 600)) --verbose
}

# expect_seed WORD...: each a whole number, nought and great ones too.
expect_seed() {
    local word
    for word in "$@"; do
        if [[ ! $word =~ ^[0-9]{1,19}$ ]]; then
            echo "./dev: \"$word\" is no seed" >&2
            exit 2
        fi
    done
}

# expect_soak: the same words as soak.
expect_soak() {
    case "${1-}" in
        "") ;;
        simulation)
            expect_number "${@:2:1}"
            expect_seed "${@:3:1}"
            expect_nothing "${@:4}"
            ;;
        program)
            expect_number "${@:2:1}"
            expect_nothing "${@:3}"
            ;;
        *)
            echo "./dev: there is no soak \"$1\"" >&2
            exit 2
            ;;
    esac
}

# soak [simulation [COUNT [SEED]] | program [SECONDS]]: both when none is named.
soak() {
    case "${1-}" in
        "")
            soak_simulation && soak_program
            ;;
        simulation) soak_simulation "${@:2}" ;;
        program) soak_program "${@:2}" ;;
    esac
}
