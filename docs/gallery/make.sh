#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes the pictures of the gallery with the examples.
set -euo pipefail
cd "$(dirname "$0")/../.."
./run.sh --size 1280x720 --output docs/gallery/builtin.png
# A model of Debian's assimp-testmodels, where they are installed.
engine=/usr/share/assimp/models/glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb
[ ! -e "$engine" ] || ./run.sh "$engine" --azimuth -142 --elevation 20 --size 960x540 --output docs/gallery/engine.png

# What the guides' programs draw. The first wants a display.
build=${VRK_BUILD:-build/release}
guides="instance-data scene many-textures shadows environment streaming"
cmake -S . -B "$build" > /dev/null
for guide in first-mesh $guides; do
    cmake --build "$build" --target "vrkguide-$guide" >&2
done
xvfb-run -a -s "-screen 0 640x480x24" "$build/bin/vrkguide-first-mesh" docs/gallery/guide-first-mesh.png
for guide in $guides; do
    "$build/bin/vrkguide-$guide" "docs/gallery/guide-$guide.png"
done

# Contact sheets of environments and what their filters make of them.
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

# The window with its texts, on a display of its own. It writes into the current folder.
viewer=$(realpath "$build/bin/vrkview")
(cd "$work" && xvfb-run -a -s "-screen 0 1280x800x24" "$viewer" --window --size 960x540 --samples 1 --aa smaa \
    --press "S, H, Shift+P" --frames 4)
mv "$work/vrkview-001.png" docs/gallery/window.png
# Materials beside another renderer's, where that is installed.
if command -v f3d > /dev/null; then
    SIZE=600x500 tools/compare_renderers.sh docs/gallery/pbr-beside-f3d.png
fi
