#!/usr/bin/env bash
# Runs clang-format, clang-tidy, cppcheck and shellcheck. Fails on any finding.
# usage: tools/lint.sh    after the release preset has been configured and built
set -euo pipefail
cd "$(dirname "$0")/.."

tools/bootstrap.sh lint
cmake --preset release -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
jobs=$(getconf _NPROCESSORS_ONLN)

git ls-files -z '*.cpp' '*.h' '*.mm' | xargs -0 clang-format --dry-run -Werror
git ls-files -z '*.sh' .ci/run | xargs -0 shellcheck
mapfile -t sources < <(git ls-files 'orvCore/src/*.cpp' 'examples/*.cpp' | grep -v '_mac\.cpp$')
cppcheck --quiet --error-exitcode=1 -j "$jobs" --std=c++17 --enable=warning,performance,portability \
    --suppress=missingIncludeSystem --suppress=unknownMacro -I orvCore/include -I orvCore/src "${sources[@]}"
printf '%s\0' "${sources[@]}" | xargs -0 -P "$jobs" -n 4 clang-tidy -p build/release --quiet
