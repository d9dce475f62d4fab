# What was typed behind a command is looked at before anything is installed or built for it. Sourced by
# ./dev.

# expect_nothing WORD...: there is none.
expect_nothing() {
    if [ $# -gt 0 ]; then
        echo "./dev: \"$1\" means nothing here" >&2
        exit 2
    fi
}

# expect_number WORD...: each a whole number above 0 that a program can take.
expect_number() {
    local word
    for word in "$@"; do
        if [[ ! $word =~ ^[1-9][0-9]{0,8}$ ]]; then
            echo "./dev: \"$word\" is no number above 0, or too large" >&2
            exit 2
        fi
    done
}

# expect_file WHAT NAME FILE: there is one of that name when its file is there.
expect_file() {
    if [ ! -f "$3" ]; then
        echo "./dev: there is no $1 \"$2\"" >&2
        exit 2
    fi
}
