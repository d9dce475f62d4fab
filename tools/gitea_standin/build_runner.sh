#!/bin/sh
# Builds a real act_runner: build_runner.sh OUTPUT
# Does nothing when OUTPUT is that version already. Needs Go 1.26 and the Go module proxy.
set -eu

version=v1.0.8
module=gitea.com/gitea/runner
output=$(realpath -m "${1:?usage: build_runner.sh OUTPUT}")

if [ "$("$output" --version 2>/dev/null || true)" = "gitea-runner version $version" ]; then
    exit 0
fi

# Built inside its own module, so that the versions it was released with are used. `go install`
# would also ask for the list of all its versions, which not every proxy gives.
export GOFLAGS="-buildvcs=false" CGO_ENABLED=0
go mod download "$module@$version"
folder=$(go env GOMODCACHE)/$module@$version
mkdir -p "$(dirname "$output")"
go -C "$folder" build -trimpath -ldflags "-X $module/internal/pkg/ver.version=$version" -o "$output" .
