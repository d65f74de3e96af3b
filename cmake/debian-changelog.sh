#!/bin/bash
# Writes the change log in Debian's form: debian-changelog.sh CHANGELOG.md. A version's heading reads "## 1.2.3 (2026-01-31)".
set -euo pipefail

while IFS= read -r line; do
  if [[ $line =~ ^'## '([^ ]+)' ('([-0-9]+)')'$ ]]; then
    [ -z "${ending:-}" ] || printf '%s\n\n' "$ending"
    printf 'vantrel (%s) unstable; urgency=medium\n\n' "${BASH_REMATCH[1]}"
    begun=
    ending=" -- Vantrel developers <developers@vantrel.invalid>  $(LC_ALL=C date -u -R -d "${BASH_REMATCH[2]}")"
  elif [ -n "${ending:-}" ]; then
    case $line in
      '**'*'**')
        line=${line//\*/}
        line="  [ $line ]"
        ;;
      '- '*) line="  * ${line#- }" ;;
      ?*) line="  $line" ;;
      # The heading brought an empty line already.
      *) [ -n "${begun:-}" ] || continue ;;
    esac
    begun=yes
    printf '%s\n' "$line"
  fi
done <"$1"
printf '\n%s\n' "${ending:?$1 names no version}"
