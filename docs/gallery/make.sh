#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes the pictures of the gallery with the examples.
set -euo pipefail
cd "$(dirname "$0")/../.."
./run.sh --size 1280x720 --output docs/gallery/builtin.png
# A model of Debian's assimp-testmodels, where they are installed.
engine=/usr/share/assimp/models/glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb
[ ! -e "$engine" ] || ./run.sh "$engine" --azimuth -142 --elevation 20 --size 960x540 --output docs/gallery/engine.png

# Contact sheets of environments and what their filters make of them.
build=${VRK_BUILD:-build/release}
cmake --build "$build" --target vrk-envmap vrk-sky >&2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/bin/vrk-sky" "$work/sky.hdr"
"$build/bin/vrk-envmap" "$work/sky.hdr" --output "$work" --size 64 --samples 1024 --ndotl 4 \
    --sheet docs/gallery/environment-sky.png
# A real one, where Debian's packages with them are installed.
if tools/get_environments.sh "$work"; then
    "$build/bin/vrk-envmap" "$work/forest.hdr" --output "$work" --lat-long 256x128 --samples 512 --model blinn-phong \
        --sheet docs/gallery/environment-forest.png
fi
