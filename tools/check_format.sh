#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Fails when a source file is not formatted by the repository's .clang-format; `--fix` formats instead.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=(--dry-run --Werror)
[ "${1:-}" = --fix ] && mode=(-i)
# Generated files keep their one-fact-a-line form.
git ls-files --cached --others --exclude-standard '*.h' '*.cpp' |
    grep -vE '^src/GL/(GLConstants|GLFunctions|GLOptionalFunctions)\.h$|^src/GL/(GLFunctionTable|GLRequirements)\.cpp$' |
    xargs clang-format "${mode[@]}"
