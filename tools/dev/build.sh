# Building and testing by preset. Sourced by ./dev.

# What was compiled in another checkout is not compiled again.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=true

# build PRESET [TARGET...]: builds nothing after a configuration that failed, not even for a caller
# that looks at the status, which keeps bash from ending by itself.
build() {
    local preset=$1
    shift
    cmake --preset "$preset" >/dev/null &&
        cmake --build --preset "$preset" ${1:+--target "$@"}
}

# run_tests PRESET [CTEST-OPTION...]: one more at a time than there are processors, as some only wait.
run_tests() {
    local preset=$1
    shift
    ctest --preset "$preset" --parallel $(($(nproc) + 1)) "$@"
}

# Every C and C++ file of ours, each followed by a NUL.
cxx_files() {
    git ls-files -z --cached --others --exclude-standard -- \
        'src/*.cpp' 'src/*.h' 'tests/*.cpp' 'tests/*.h' 'tools/*.cpp' 'tools/*.h' \
        'bench/*.cpp' 'bench/*.h' 'bench/*.c'
}
