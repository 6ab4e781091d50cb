#!/usr/bin/env bash
# Tests that run_page.sh passes what is right and fails what isn't. Arguments: those of run_page.sh behind the page.
set -euo pipefail

runner=$(dirname "$(realpath "${BASH_SOURCE[0]}")")/run_page.sh
readonly runner
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

failures=0
fail() {
  echo "FAILED: $1"
  sed 's/^/  /' "$folder/log"
  failures=$((failures + 1))
}

passes() {  # passes DESCRIPTION; the page is the standard input
  cat >"$folder/page.md"
  "$runner" "$folder/page.md" "${project[@]}" >"$folder/log" 2>&1 || fail "$1 fails"
}

fails() {  # fails DESCRIPTION TEXT
  cat >"$folder/page.md"
  if "$runner" "$folder/page.md" "${project[@]}" >"$folder/log" 2>&1; then
    fail "$1 passes"
  else
    grep -qF -- "$2" "$folder/log" || fail "$1 does not print: $2"
  fi
}

readonly project=("$@")

passes 'a page that is right' <<'PAGE'
<!-- test: file numbers.txt -->
```text
one
```
```sh
cat numbers.txt
echo two
echo '*'
```
```text
one
...
*
```
<!-- test: fails -->
```sh
false
```
```c
int main(void) { return 0; }
```
```cpp
#include <korvel/korvel.hpp>
int main() {}
```
<!-- test: none, it takes a week -->
```fortran
stop
```
[a link](page.md#place)
PAGE

fails 'a command that fails' ':1: ends with 3' <<'PAGE'
```sh
exit 3
```
PAGE
fails 'a failure in the middle' ':1: ends with 1' <<'PAGE'
```sh
false
true
```
PAGE
fails 'a failure that succeeds' ':2: succeeds' <<'PAGE'
<!-- test: fails -->
```sh
true
```
PAGE
fails 'another output' ':4: is not what the command above prints' <<'PAGE'
```sh
echo one
```
```text
*
```
PAGE
fails 'a program that does not compile' ':1: does not compile' <<'PAGE'
```c
int main(void) { return nothing; }
```
PAGE
fails 'a program with a warning' ':1: does not compile' <<'PAGE'
```cpp
int main() { int unused; }
```
PAGE
fails 'a program that fails' ':1: does not run' <<'PAGE'
```cpp
int main() { return 1; }
```
PAGE
fails 'a file that does not compile' ':2: does not compile' <<'PAGE'
<!-- test: file frame.c -->
```c
int main(void) { return nothing; }
```
PAGE
fails 'a text that a source does not have' ':2: not in README.md' <<'PAGE'
<!-- test: from README.md -->
```sh
this line stands nowhere else
```
PAGE
fails 'a language that nobody runs' ":1: nobody can run 'fortran'" <<'PAGE'
```fortran
stop
```
PAGE
fails 'a block without a language' ":1: nobody can run ''" <<'PAGE'
```
ls
```
PAGE
fails 'a reason that is missing' ":2: unknown instruction 'none'" <<'PAGE'
<!-- test: none -->
```sh
true
```
PAGE
fails 'an instruction without a block' ':2: an instruction without a block below it' <<'PAGE'
<!-- test: none, for fun -->

```sh
true
```
PAGE
fails 'a block without an end' 'the last block has no end' <<'PAGE'
```sh
true
PAGE
fails 'an indented block' ":2: an indented block" <<'PAGE'
1. First:
   ```sh
   false
   ```
PAGE
fails 'a link to nothing' "links to 'nowhere.md'" <<'PAGE'
[a link](nowhere.md)
PAGE

((failures == 0)) && echo "all passed"
