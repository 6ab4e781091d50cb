# For the tests of the korvel command, which source it with the command's path as the first argument: an empty working
# folder, the command by its name, and checks that are counted.
# shellcheck shell=bash

tool=$(realpath "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit
readonly tool folder

# The examples of the help call the command by its name.
mkdir bin
ln -s "$tool" bin/korvel
PATH=$folder/bin:$PATH

# What ends a test other than by a check says where, as the second half of 'check ... && [ ... ]' does.
trap 'echo "FAILED: line $LINENO: $BASH_COMMAND"' ERR

checks=0
failures=0

check() {  # check DESCRIPTION COMMAND...
  local description=$1
  shift
  checks=$((checks + 1))
  if ! "$@"; then
    failures=$((failures + 1))
    echo "FAILED: $description"
    sed 's/^/  out: /' out 2>/dev/null | head -n 20
    sed 's/^/  err: /' err 2>/dev/null | head -n 20
  fi
}

# Runs the command; leaves its exit code in $code and its output in the files out and err.
run() {
  code=0
  korvel "$@" >out 2>err </dev/null || code=$?
}

succeeds() {  # succeeds ARGUMENT...
  run "$@"
  check "korvel $* exits with 0" [ "$code" -eq 0 ]
  check "korvel $* prints no error" [ ! -s err ]
}

fails() {  # fails CODE TEXT ARGUMENT...
  local expected=$1 text=$2
  shift 2
  run "$@"
  check "korvel $* exits with $expected, not $code" [ "$code" -eq "$expected" ]
  check "korvel $* prints: $text" grep -qF -- "$text" err
  check "korvel $* prints nothing else" [ ! -s out ]
}

# 8-bit samples that are neither constant nor regular, the same each time.
samples() {  # samples COUNT
  head -c "$1" <(seq 100000 999999)
}

bytes_of() {  # bytes_of FILE OFFSET COUNT: in hexadecimal
  od -An -v -tx1 -j "$2" -N "$3" "$1" | tr -d ' \n'
}

is_bytes() {  # is_bytes FILE NUMBER...: in decimal
  local file=$1
  shift
  [ "$(od -An -v -tu1 -w1 "$file" | tr -d ' ' | tr '\n' ' ')" = "$* " ]
}

is_png() {  # is_png FILE WIDTH HEIGHT BIT_DEPTH COLOUR_TYPE
  local header
  printf -v header '%08x%08x%02x%02x000000' "$2" "$3" "$4" "$5"
  [[ -f $1 ]] && [[ $(bytes_of "$1" 0 8) == 89504e470d0a1a0a ]] && [[ $(bytes_of "$1" 12 4) == 49484452 ]] &&
    [[ $(bytes_of "$1" 16 13) == "$header" ]] || return 1
  if command -v pngcheck >/dev/null; then pngcheck -q "$1"; fi
}

# shellcheck disable=SC2034  # for those who source this
readonly grey=0 rgb=2 rgba=6

ends_well() {  # the last line of a test
  echo "$checks checks, $failures failed"
  [ "$failures" -eq 0 ]
}
