#!/usr/bin/env bash
# The main job of `./dev run`, given the build folder: the model editor on a bundled example.
# With a display it opens the editor window (extra arguments replace the model). Without one it
# draws the example offscreen into build/screenshots/ and says where the picture is.
set -euo pipefail
build=$1
shift
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export LATTIX_RESOURCE_PATH="$root/resources"
export TAMARIN_HOME="$root/resources"
modeler="$build/apps/modeler/lattix-modeler"
if [[ ! -x "$modeler" ]]; then
    echo "run-main: $modeler is not built (it needs Qt 6: qt6-base-dev, qt6-svg-dev)" >&2
    exit 1
fi
example="$root/examples/if-else.gmdx"
if [[ ! -f "$example" ]]; then
    echo "run-main: the example model $example is missing" >&2
    exit 1
fi
if [[ -n "${DISPLAY:-}" || -n "${WAYLAND_DISPLAY:-}" ]]; then
    if (($#)); then
        exec "$modeler" "$@"
    fi
    exec "$modeler" "$example"
fi
mkdir -p "$root/build/screenshots"
picture="$root/build/screenshots/$(basename "$example" .gmdx).png"
QT_QPA_PLATFORM=offscreen "$modeler" --screenshot "$picture" "$example"
echo "run-main: no display; the editor drew $(basename "$example") into $picture"
