#!/bin/bash
# Checks that the README lists every function that the headers of the fake declare.
set -u
cd "$(dirname "$0")"
missing=0
# A declaration begins at the first column, and its parameters begin on its first line.
functions=$(grep -hoE '^[A-Za-z_:][A-Za-z_0-9:* ]* \*?_?[A-Za-z]+\(' include/*.h |
    grep -vE '^(inline|using|struct|static) ' | sed -E 's/\($//; s/.*[ *]//' | sort -u)
for function in $functions; do
    if [ "$function" != NextInterfaceNumber ] && ! grep -q "\`$function\`" README.md; then
        echo "README.md does not list $function" >&2
        missing=$((missing + 1))
    fi
done
[ -n "$functions" ] && [ "$missing" -eq 0 ]
