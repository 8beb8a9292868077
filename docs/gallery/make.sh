#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes the pictures of the gallery with the examples.
set -euo pipefail
cd "$(dirname "$0")/../.."
./run.sh --size 960x540 --output docs/gallery/engine.png
