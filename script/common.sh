# Functions that the scripts share. To be sourced.

# usage ARGUMENTS: prints how the script is called and the first line of its comment, and exits.
usage() {
  printf 'usage: script/%s\n' "${0##*/}${1:+ $1}" >&2
  sed -n '2s/^# //p' "script/${0##*/}" >&2
  exit 2
}

# depends FILE: prints the packages in the Depends of a control file, without Orvelin itself. The
# field is on one line and names no versions.
depends() {
  sed -n 's/^Depends: //p' "$1" | tr -d ' ' | tr ',' '\n' | grep -vE '^(\$.*|orvelin)$'
}
