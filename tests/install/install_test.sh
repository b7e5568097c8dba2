#!/usr/bin/env bash
# Installs the build into a scratch prefix and checks what a desktop expects to find there:
# both programs, their manual pages, the manual, the data, the desktop entry (which
# desktop-file-validate must accept), the patch file type and the icons; then runs the
# installed programs from there.
# Usage: install_test.sh BUILD_DIR
set -euo pipefail
build="$1"
if [ ! -x "$build/app/quillmer/quillmer" ] || [ ! -x "$build/app/cli/quillmer-cli" ]; then
  echo "the programs are not built in $build"
  exit 77
fi
prefix="$(mktemp -d)"
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" > /dev/null

fail=0
expect() {
  if [ ! -e "$prefix/$1" ]; then
    echo "missing: $1"
    fail=1
  fi
}
expect bin/quillmer
expect bin/quillmer-cli
expect share/man/man1/quillmer.1
expect share/man/man1/quillmer-cli.1
expect share/quillmer/docs/manual.html
expect share/quillmer/default.pbt
expect share/quillmer/Names
expect share/quillmer/examples/demo.qmp
expect share/applications/quillmer.desktop
expect share/mime/packages/quillmer.xml
expect share/icons/hicolor/scalable/apps/quillmer.svg
expect share/icons/hicolor/scalable/mimetypes/application-x-quillmer-patch.svg

desktop="$prefix/share/applications/quillmer.desktop"
if ! desktop-file-validate "$desktop"; then
  echo "desktop-file-validate refuses $desktop"
  fail=1
fi
grep -q '^MimeType=application/x-quillmer-patch;' "$desktop" || { echo "the entry doesn't open patches"; fail=1; }
grep -q '^Exec=quillmer %f' "$desktop" || { echo "the entry doesn't pass the file"; fail=1; }
grep -q 'type="application/x-quillmer-patch"' "$prefix/share/mime/packages/quillmer.xml" || { echo "no patch type"; fail=1; }
grep -q 'pattern="\*.qmp"' "$prefix/share/mime/packages/quillmer.xml" || { echo "no .qmp glob"; fail=1; }
if grep -q '@' "$prefix/share/man/man1/quillmer.1"; then
  echo "a placeholder is left in the manual page"
  fail=1
fi

# The installed programs answer and find their data where they were put.
"$prefix/bin/quillmer" --version | grep -q '^quillmer [0-9]' || { echo "quillmer --version"; fail=1; }
"$prefix/bin/quillmer-cli" --version | grep -q '^quillmer-cli [0-9]' || { echo "quillmer-cli --version"; fail=1; }
"$prefix/bin/quillmer-cli" info "$prefix/share/quillmer/examples/demo.qmp" > /dev/null || { echo "the installed demo"; fail=1; }
exit $fail
