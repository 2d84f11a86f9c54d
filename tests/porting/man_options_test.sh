#!/usr/bin/env bash
# Every option that a tool's --help lists appears in its manual page.
#   man_options_test.sh TOOL MANPAGE
set -euo pipefail
tool=$1
page=$2
[ -s "$page" ] || { echo "no manual page $page"; exit 1; }
# Options are the --name and -x words at the start of the help's option lines.
options=$("$tool" --help | grep -oE '^ +--?[A-Za-z][A-Za-z0-9-]*' | tr -d ' ' | sort -u)
[ -n "$options" ] || { echo "$tool --help lists no options"; exit 1; }
# roff writes a dash as \- ; compare with the page's text with those undone.
text=$(sed 's/\\-/-/g' "$page")
missing=()
for option in $options; do
  grep -qE -- "(^|[^A-Za-z0-9-])${option}([^A-Za-z0-9-]|$)" <<<"$text" || missing+=("$option")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "$(basename "$page") lacks options that $(basename "$tool") --help lists: ${missing[*]}"
  exit 1
fi
echo "$(basename "$page"): all $(wc -w <<<"$options") options of --help are documented"
