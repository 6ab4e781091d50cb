#!/usr/bin/env bash
# Tests the manual and the completions of korvel against its own help. Arguments: path of the command, folder of the
# manual and the completions. Shells other than bash are tested where they are.
set -euo pipefail

manual=$(realpath "$2")
readonly manual

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"

# The names of a help's options, or what another section of it lists.
options_of() { sed -n 's/^  \(-[^ ]*\).*/\1/p' "$1" | tr ',' '\n'; }
commands_of() { sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p' "$1"; }

korvel --help >help
mapfile -t commands < <(commands_of help)
check "the help lists commands" [ ${#commands[@]} -gt 5 ]

# --- manual

MANWIDTH=100 man --warnings --encoding=UTF-8 --local-file "$manual/man/korvel.1" >page 2>err
check "the manual has no faults" [ ! -s err ]
is_in_manual() { grep -qE -- "$1" page; }
for command in "${commands[@]}"; do
  korvel "$command" --help >"help.$command"
  check "the manual has the command $command" is_in_manual "^   $command\$"
  for option in $(options_of "help.$command"); do
    check "the manual has $option" is_in_manual "(^|[ ,])$option([ ,]|\$)"
  done
done
check "the manual tells what an option takes" is_in_manual '--mode fast\|hq\|classic'
check "the manual has examples as they are" is_in_manual "^ +korvel info picture\\.png\$"
check "what many commands share stands once" [ "$(grep -c 'end in .png, .bmp, .jpg' page)" -eq 1 ]

# --- bash

# shellcheck disable=SC1091
source "$manual/bash/korvel"
offers=()
complete_in_bash() {  # complete_in_bash WORD...: the last one is under the cursor
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMPREPLY=()
  _korvel || true  # whose compopt fails outside of a completion
  offers=("${COMPREPLY[@]}")
  echo "${offers[*]}" >out
}
offers_in_bash() {  # offers_in_bash "OFFERS" WORD...
  local expected=$1
  shift
  complete_in_bash "$@"
  check "bash completes '$*' to: $expected" [ "${offers[*]}" = "$expected" ]
}

complete_in_bash korvel ''
check "bash offers all commands" [ "${offers[*]}" = "${commands[*]} $(options_of help | tr '\n' ' ' | sed 's/ $//')" ]
for command in "${commands[@]}"; do
  complete_in_bash korvel "$command" -
  check "bash offers all options of $command" [ "${offers[*]}" = "$(options_of "help.$command" | xargs)" ]
done
touch picture.png 'of two words.png'
mkdir pictures
offers_in_bash 'convert' korvel conv
offers_in_bash 'fast hq classic' korvel convert a.png b.png --mode ''
offers_in_bash 'hq' korvel convert --mode = h
offers_in_bash 'fast hq classic' korvel convert --mode =
offers_in_bash 'Mono10p Mono10 Mono10g40Qrv' korvel convert --format Mono10
offers_in_bash '1 2 3 4 5' korvel correct --hot-pixels ''
offers_in_bash 'pictures' korvel convert -o pict
offers_in_bash 'picture.png' korvel info picture.
offers_in_bash 'of two words.png' korvel info of
offers_in_bash '' korvel convert --size ''
offers_in_bash '' korvel formats pict

# --- zsh: a session of it, on a terminal of its own

completes_in_zsh() {  # completes_in_zsh TYPED RESULT
  # shellcheck disable=SC2016
  timeout 60 zsh -f -c '
    zmodload zsh/zpty
    zpty session env TERM=dumb zsh -f -i
    zpty -w session "PS1= ; fpath=($1 \$fpath); autoload -U compinit; compinit -u -D; echo rea""dy"
    zpty -r session out "*ready*"
    zpty -w -n session "$2"$'\''\t'\''
    zpty -r session out "*$3*"
    zpty -d session' zsh "$manual/zsh" "$1" "$1$2" >out 2>err
}
if command -v zsh >/dev/null; then
  for typed in 'korvel conv:ert' 'korvel convert --mo:de' 'korvel convert --mode h:q' 'korvel convert --to BGRa1:' \
    'korvel info pic:ture'; do
    check "zsh completes '${typed%:*}'" completes_in_zsh "${typed%:*}" "${typed#*:}"
  done
fi

# --- fish

if command -v fish >/dev/null; then
  offers_in_fish() {  # offers_in_fish "OFFERS" TYPED
    HOME=$folder fish --no-config -c "source '$manual/fish/korvel.fish'; complete -C '$2'" 2>err | cut -f 1 >out
    check "fish completes '$2' to: $1" [ "$(xargs <out)" = "$1" ]
  }
  offers_in_fish 'convert correct' 'korvel co'
  offers_in_fish 'classic fast hq' 'korvel convert --mode '
  offers_in_fish '--mode' 'korvel convert --mo'
  offers_in_fish 'Mono10 Mono10g40Qrv Mono10p' 'korvel convert --to Mono10'
  offers_in_fish 'pictures/' 'korvel convert -o pict'
  offers_in_fish 'picture.png pictures/' 'korvel info pict'
  offers_in_fish '' 'korvel formats pict'
  for command in "${commands[@]}"; do
    HOME=$folder fish --no-config -c "source '$manual/fish/korvel.fish'; complete -C 'korvel $command --'" |
      cut -f 1 | sort >out
    check "fish offers all options of $command" [ "$(<out)" = "$(options_of "help.$command" | grep -e '^--' | sort)" ]
  done
fi

ends_well
