#!/bin/sh
# The reference of the public headers, by Doxygen: tools/docs.sh. A warning fails, and so does a class without a page.
set -eu
cd "$(dirname "$0")/.."
mkdir -p build/docs
rm -rf build/docs/html
doxygen docs/Doxyfile

missing=0
for class in $(sed -nE 's/^(class|struct) (VXSUBTITLE_API )?([A-Za-z0-9_]+) .*\{$/\3/p' subtitle/*.h); do
    page=$(echo "$class" | sed 's/_/__/g')
    ls build/docs/html/*"android_1_1$page.html" >/dev/null 2>&1 && continue
    echo "docs: $class has no page"
    missing=1
done
[ "$missing" = 0 ] || exit 1
echo "docs: build/docs/html/index.html, $(find build/docs/html -name '*android_1_1*.html' ! -name '*-members.html' | wc -l)" \
    "pages of classes and records"
