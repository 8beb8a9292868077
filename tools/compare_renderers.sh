#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Draws a glTF 2 file by vrkview and by f3d, a viewer of another make (Debian package f3d), through the same camera and in
# the same environment, and puts both pictures side by side: ours on the left.
#   tools/compare_renderers.sh out.png [model.glb [sky.hdr]]
# Without a model it is the board of tools/make_pbr_model.py, without an environment the sky of the built-in scene. SIZE
# sets the size of each picture, 720x600 if not given, AZIMUTH and ELEVATION where the eye stands around the model.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${VRK_BUILD:-$here/../build/release}
size=${SIZE:-720x600}
if [ $# -lt 1 ] || [ $# -gt 3 ]; then
    echo "usage: $0 out.png [model.glb [sky.hdr]]" >&2
    exit 2
fi
for needed in f3d xvfb-run python3; do
    if ! command -v "$needed" > /dev/null; then
        package=${needed/xvfb-run/xvfb}
        echo "$0: there is no $needed: apt-get install $package" >&2
        exit 1
    fi
done
if [ ! -x "$build/bin/vrkview" ]; then
    echo "$0: there is no $build/bin/vrkview: ./run.sh builds it" >&2
    exit 1
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sky=${3:-$work/sky.hdr}
[ $# -eq 3 ] || "$build/bin/vrk-sky" "$work/sky.hdr" > /dev/null
if [ $# -ge 2 ]; then
    # A copy with a camera, in front of its own ones, among links to the files that it names.
    folder=$(cd "$(dirname "$2")" && pwd)
    mkdir "$work/model"
    find "$folder" -mindepth 1 -maxdepth 1 -exec ln -s -t "$work/model" {} +
    model="$work/model/compared.${2##*.}" camera=compared
    rm -f "$model" # were it a link, its file would be written to
    python3 "$here/add_gltf_camera.py" "$2" "$model" "${AZIMUTH:-35}" "${ELEVATION:-22}" \
        "$(python3 -c "print(${size/x/ / })")"
else
    model="$work/board.glb" camera=front
    python3 "$here/make_pbr_model.py" "$model"
fi

"$build/bin/vrkview" "$model" --env "$sky" --camera "$camera" --size "$size" --output "$work/vrkview.png" > /dev/null
# Without the user's configuration. Multisampling hides behind no option, so it draws as it does by itself.
xvfb-run -a f3d --dry-run --hdri "$sky" --camera-index 0 --resolution "${size/x/,}" --output "$work/f3d.png" "$model" > /dev/null
python3 "$here/join_pictures.py" "$1" "$work/vrkview.png" "$work/f3d.png"
echo "$1"
