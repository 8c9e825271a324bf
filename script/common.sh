# Functions for the scripts. Source this file.

# usage ARGUMENTS: prints the script's usage, with the first line of its comment, and exits.
usage() {
  printf 'usage: script/%s\n' "${0##*/}${1:+ $1}" >&2
  sed -n '2s/^# //p' "script/${0##*/}" >&2
  exit 2
}

# depends FILE: prints the packages in the field Depends of a control file, without Orvelin. The
# field must be on one line, without versions.
depends() {
  sed -n 's/^Depends: //p' "$1" | tr -d ' ' | tr ',' '\n' | grep -vE '^(\$.*|orvelin)$'
}
