#!/usr/bin/env bash
# The main job of `./dev run`, given the build folder: opens every example model with lxmodel and
# shows what it holds (operators, ports, connections, messages). Fails when one cannot be read or
# carries error messages.
set -euo pipefail
build=$1
shift
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export LATTIX_RESOURCE_PATH="$root/resources"
export TAMARIN_HOME="$root/resources"
lxmodel="$build/apps/lxmodel/lxmodel"
if [[ ! -x "$lxmodel" ]]; then
    echo "run-main: $lxmodel is not built" >&2
    exit 1
fi
shopt -s nullglob
models=("$root"/examples/*.gmdx)
if ((${#models[@]} == 0)); then
    echo "run-main: no example models in $root/examples" >&2
    exit 1
fi
status=0
for model in "${models[@]}"; do
    "$lxmodel" info "$model" || status=$?
    echo
done
exit "$status"
