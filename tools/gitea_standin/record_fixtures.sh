#!/bin/bash
# Records what a real act_runner prints into FOLDER: record_fixtures.sh ACT_RUNNER FOLDER
# Takes about twenty seconds. Needs Go, curl and bash; everything runs on loopback in a scratch folder.
set -euo pipefail

runner=$(realpath "${1:?usage: record_fixtures.sh ACT_RUNNER FOLDER}")
fixtures=$(realpath -m "${2:?usage: record_fixtures.sh ACT_RUNNER FOLDER}")
here=$(dirname "$(realpath "$0")")
scratch=$(mktemp -d)
standin_pid='' daemon_pid=''

cleanUp() {
    for pid in $daemon_pid $standin_pid; do kill "$pid" 2>/dev/null || true; done
    wait
    rm -rf "$scratch"
}
trap cleanUp EXIT

mkdir -p "$fixtures" "$scratch/home/actrunner/data"
go -C "$here" build -o "$scratch/gitea_standin" .
cp "$runner" "$scratch/home/actrunner/act_runner"
export HOME=$scratch/home
runner=$HOME/actrunner/act_runner
cd "$HOME/actrunner/data"
printf 'log:\n  level: debug\n' > runner-config.yaml

# Waits until a file has a line with the text, for at most 30 s.
waitFor() { # FILE TEXT
    timeout 30 grep -qaF -- "$2" <(tail -n +1 -f "$1" --pid $$ 2>/dev/null)
}

startStandin() {
    "$scratch/gitea_standin" > "$scratch/standin.txt" &
    standin_pid=$!
    waitFor "$scratch/standin.txt" 'listening on'
    url=$(awk '{ print $3 }' "$scratch/standin.txt")
}

stopStandin() {
    kill "$standin_pid"
    wait "$standin_pid" || true
    standin_pid=''
}

register() { # NAME INSTANCE TOKEN
    "$runner" register --no-interactive --instance "$2" --token "$3" --name mini --labels macos:host \
        > "$scratch/$1.raw" 2>&1 && tell "$1" 0 || tell "$1" $?
}

tell() { # NAME STATUS
    echo "$1: exit status $2"
}

startDaemon() { # NAME
    "$runner" daemon --config "$PWD/runner-config.yaml" > "$scratch/$1.raw" 2>&1 &
    daemon_pid=$! daemon_name=$1
}

awaitDaemon() {
    wait "$daemon_pid" && tell "$daemon_name" 0 || tell "$daemon_name" $?
    daemon_pid=''
}

stopDaemon() {
    kill "$daemon_pid"
    awaitDaemon
}

queue() { # WORKFLOW, with \n for line ends
    curl -sSf -o "$scratch/queued.json" -d "{\"repository\":\"acme/site\",\"workflow\":\"$1\"}" "$url/control/jobs"
}

# Runs one workflow until its worker is done.
recordJob() { # NAME WORKFLOW
    startDaemon "$1"
    queue "$2"
    waitFor "$scratch/$1.raw" 'Worker 0 finished ('
    sleep 1 # for the reports, and for other workers
    stopDaemon
}

# Copies a recording without what is this machine's own.
keep() { # NAME
    sed -e "s|$HOME|/home/ada|g" -e "s|$(hostname)|mini.local|g" \
        -e 's|127\.0\.0\.1:[0-9]\+|127.0.0.1:3000|g' "$scratch/$1.raw" > "$fixtures/$1.txt"
}

startStandin
register register_empty_instance '' standin-token
register register_bad_token "$url" wrong-token
startDaemon daemon_not_registered
awaitDaemon
register register_ok "$url" standin-token

head='name: Deploy\non: push\njobs:\n  push:\n    runs-on: macos\n'
recordJob daemon_job "$head    steps:\n      - name: Greet\n        run: echo hello from the host\n      - name: Count\n        run: |\n          for i in 1 2 3; do echo line \$i; done\n"
recordJob daemon_job_fails "$head    steps:\n      - run: exit 3\n"
recordJob daemon_job_named "$head    name: Push everything\n    steps:\n      - run: echo done\n"
recordJob daemon_job_matrix "$head    strategy:\n      matrix:\n        size: [1, 2, 3, 4, 5, 6, 7, 8, 9, 10]\n    steps:\n      - run: echo done\n"

startDaemon daemon_sigterm
queue "$head    steps:\n      - run: echo busy; sleep 5\n"
waitFor "$scratch/daemon_sigterm.raw" '  | busy'
stopDaemon

startDaemon daemon_server_goes_away
waitFor "$scratch/daemon_server_goes_away.raw" 'declare successfully'
stopStandin
waitFor "$scratch/daemon_server_goes_away.raw" 'failed to fetch task'
sleep 8 # for some more of the same
stopDaemon

startDaemon daemon_server_away
awaitDaemon

for recording in "$scratch"/*.raw; do keep "$(basename "$recording" .raw)"; done
