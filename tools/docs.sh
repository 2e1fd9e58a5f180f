#!/usr/bin/env bash
# Builds the API reference into build/docs/html. Fails on any warning of Doxygen: an exported name without
# documentation is one.
set -euo pipefail
cd "$(dirname "$0")/.."

tools/bootstrap.sh docs
ORV_VERSION=$(sed -n 's/^project(orvCore VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
# The style sheet is optional: without it, the pages have Doxygen's own style.
ORV_DOCS_STYLE=/usr/share/doxygen-awesome-css/doxygen-awesome.css
[ -f "$ORV_DOCS_STYLE" ] || ORV_DOCS_STYLE=
export ORV_VERSION ORV_DOCS_STYLE

rm -rf build/docs
mkdir -p build/docs
doxygen docs/Doxyfile

# Doxygen does not check enumerators.
undocumented=$(awk '
    /<enumvalue / { inside = 1; documented = 0 }
    inside && /<name>/ { name = $0 }
    inside && /<para>/ { documented = 1 }
    /<\/enumvalue>/ { if (!documented) print FILENAME ":" name; inside = 0 }' build/docs/xml/*.xml)
if [ -n "$undocumented" ]; then
    printf 'These enumerators are not documented:\n%s\n' "$undocumented" >&2
    exit 1
fi
echo "build/docs/html/index.html"
