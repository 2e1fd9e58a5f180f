#!/usr/bin/env bash
# Lays out every C++ file as .clang-format says.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files -z '*.cpp' '*.h' '*.mm' | xargs -0 clang-format -i
