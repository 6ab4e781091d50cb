#!/usr/bin/env bash
# Runs what a page of the documents shows. Its code blocks, from first to last, in an empty folder in which include/,
# examples/ and build/release are those of the project:
#
#   sh          is run, with the korvel command by its name, and build/demo as scripts/demo.sh makes it; it must succeed
#               within two minutes
#   text        is what the sh block before it prints; a line "..." stands for any lines
#   c, cpp      is compiled, linked and run; it must succeed
#
# A comment right above a block tells otherwise:
#
#   <!-- test: file NAME -->   the block is that file, for the blocks below; C and C++ are compiled as well
#   <!-- test: from PATH -->   the block stands word for word in that source of the project
#   <!-- test: fails -->       the sh block must fail
#   <!-- test: none, WHY -->   nothing is done
#
# Everything else fails: a block of another language or without any, a comment that this doesn't know. So do links to
# files that aren't there.
#
# Usage: run_page.sh PAGE PROJECT BUILD C_COMPILER C++_COMPILER [FLAG...]
set -euo pipefail

page=$(realpath "$1")
project=$(realpath "$2")
build=$(realpath "$3")
c_compiler=$(command -v "$4")
cpp_compiler=$(command -v "$5")
shift 5
readonly page project build c_compiler cpp_compiler flags=("$@")
readonly warnings=(-Wall -Wextra -Wpedantic -Werror)

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/work" "$folder/bin"
cd "$folder/work"
mkdir build
ln -s "$build" build/release
ln -s "$project/include" "$project/examples" .
ln -s "$build/tools/korvel" "$folder/bin/korvel"
printf '#!/bin/sh\nexec %q %s "$@"\n' "$c_compiler" "${flags[*]}" >"$folder/bin/cc"
printf '#!/bin/sh\nexec %q %s "$@"\n' "$cpp_compiler" "${flags[*]}" >"$folder/bin/c++"
chmod +x "$folder/bin/cc" "$folder/bin/c++"
PATH=$folder/bin:$PATH
if grep -q build/demo "$page"; then "$build/tools/korvel-demo" build/demo --seconds 0.01 --video-seconds 0.1 >/dev/null; fi
readonly libraries=(-L "$build" -l korvel "-Wl,-rpath,$build")

checks=0
failures=0
fail() {  # fail LINE WHAT [FILE]
  failures=$((failures + 1))
  echo "FAILED: $(basename "$page"):$1: $2"
  if [[ $# -gt 2 ]]; then sed 's/^/  /' "$3" | head -n 20; fi
}

compile() {  # compile LANGUAGE SOURCE PROGRAM
  if [[ $1 == c ]]; then
    cc -std=c99 "${warnings[@]}" -I include "$2" "${libraries[@]}" -o "$3"
  else
    c++ -std=c++17 "${warnings[@]}" -I include "$2" "${libraries[@]}" -o "$3"
  fi
}

# The pattern that the lines of a text block mean.
matches() {  # matches PRINTED SHOWN
  local pattern='' line
  while IFS= read -r line; do
    if [[ $line == ... ]]; then pattern+='*'; else pattern+=$(printf '%q' "$line")$'\n'; fi
  done <"$2"
  # shellcheck disable=SC2053  # a pattern
  [[ $(<"$1")$'\n' == $pattern ]]
}

run_block() {  # run_block LINE LANGUAGE INSTRUCTION FILE
  local line=$1 language=$2 instruction=$3 block=$4
  local log=$folder/log
  checks=$((checks + 1))
  case $instruction in
    'none, '?*) return ;;
    'from '*)
      [[ $(<"$project/${instruction#from }") == *"$(<"$block")"* ]] || fail "$line" "not in ${instruction#from }"
      return
      ;;
    'file '*)
      mkdir -p "$(dirname "${instruction#file }")"
      cp "$block" "${instruction#file }"
      case $language in
        c | cpp) compile "$language" "${instruction#file }" "$folder/program" >"$log" 2>&1 ||
          fail "$line" "does not compile" "$log" ;;
      esac
      return
      ;;
    '' | fails) ;;
    *)
      fail "$line" "unknown instruction '$instruction'"
      return
      ;;
  esac
  case $language in
    sh)
      local code=0
      timeout 120 bash -euo pipefail "$block" >"$folder/printed" 2>"$log" </dev/null || code=$?
      if [[ $instruction == fails ]]; then
        [[ $code -ne 0 ]] || fail "$line" "succeeds"
        cp "$log" "$folder/printed"
      elif [[ $code -ne 0 ]]; then
        fail "$line" "ends with $code" "$log"
      fi
      ;;
    text)
      matches "$folder/printed" "$block" || fail "$line" "is not what the command above prints:" "$folder/printed"
      ;;
    c | cpp)
      cp "$block" "$folder/program.$language"
      if ! compile "$language" "$folder/program.$language" "$folder/program" >"$log" 2>&1; then
        fail "$line" "does not compile" "$log"
      elif ! timeout 120 "$folder/program" >"$log" 2>&1 </dev/null; then
        fail "$line" "does not run" "$log"
      fi
      ;;
    *)
      fail "$line" "nobody can run '$language'"
      ;;
  esac
}

# One pass over the page's lines.
number=0
language=''
instruction=''
in_block=false
while IFS= read -r text || [[ -n $text ]]; do
  number=$((number + 1))
  if $in_block; then
    if [[ $text == '```' ]]; then
      in_block=false
      run_block "$start" "$language" "$instruction" "$folder/block"
      instruction=''
    else
      printf '%s\n' "$text" >>"$folder/block"
    fi
  elif [[ $text == '```'* ]]; then
    in_block=true
    start=$number
    language=${text#'```'}
    : >"$folder/block"
  elif [[ $text =~ ^[[:space:]]+'```' ]]; then
    fail "$number" "an indented block, which this doesn't see"
  elif [[ $text =~ ^'<!-- test: '(.*)' -->'$ ]]; then
    instruction=${BASH_REMATCH[1]}
  elif [[ -n $instruction ]]; then
    fail "$number" "an instruction without a block below it"
    instruction=''
  fi
done <"$page"
if $in_block; then fail "$number" "the last block has no end"; fi

# Links to files of the project.
# shellcheck disable=SC2016  # the backquotes are Markdown's
while IFS= read -r target; do
  case $target in
    http* | '#'* | '') continue ;;
  esac
  checks=$((checks + 1))
  [[ -e $(dirname "$page")/${target%%#*} ]] || fail '' "links to '$target', which isn't there"
done < <(sed '/^```/,/^```$/d' "$page" | grep -oE '\]\([^)]*\)' | sed 's/^](//; s/)$//')

echo "$checks checks, $failures failed"
((failures == 0))
