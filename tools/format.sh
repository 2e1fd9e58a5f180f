#!/usr/bin/env bash
# Formats every C++ file with clang-format.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files -z '*.cpp' '*.h' '*.mm' | xargs -0 clang-format -i
