# ./dev demo: goes the way of tests/e2e/journey_test.py on a virtual display and puts the pictures
# that it leaves into docs/pictures. Sourced by ./dev.

require_go() {
    command -v go >/dev/null || {
        echo "./dev demo: needs Go 1.26, which builds the act_runner that the pictures show" >&2
        exit 1
    }
}

# take_pictures PRESET: what is built of that preset is what they show.
take_pictures() {
    VALDORN_SKIP_NOTHING=1 run_tests "$1" --tests-regex '^e2e\.journey_test$'
    PYTHONPATH=tests/e2e python3 -B tools/dev/pictures.py "build/$1/artefacts/pictures" docs/pictures
}
