# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# Completion of quorvel's command line for bash: source this, or install it as
# /usr/share/bash-completion/completions/quorvel. tests/monitor/usage_test.py compares it with the help.

# The options of a command; of all commands if none is typed yet.
_quorvel_options() {
  local options='--json --verbose --help --version'
  case $1 in
    demo) options+=' --device --for --record --force' ;;
    watch) options+=' --device --for' ;;
    get | dump) options+=' --device' ;;
    record) options+=' --device --for --force' ;;
    play) options+=' --record --force --speed --step' ;;
    plot) options+=' --output' ;;
    *) options+=' --device --for --record --force --speed --step --output' ;;
  esac
  printf '%s' "$options"
}

# The types of temperatures, from the help of the program that is being completed.
_quorvel_types() {
  "$1" watch --help 2>/dev/null |
    sed -n '/^TYPE is one of /,/\.$/ { s/^TYPE is one of //; s/[,.]/:/g; p }'
}

_quorvel_files() {
  compopt -o filenames 2>/dev/null || :  # fails outside a completion
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

# bash splits "--device=linux" and "SKIN:skin" into several words, which the program receives as one.
# The loop joins the words before the current one again.
_quorvel() {
  local current=${COMP_WORDS[COMP_CWORD]} words=() glued='' i word
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    if [[ $word == [=:] ]]; then
      [ ${#words[@]} != 0 ] && words[-1]+=$word
      glued=yes
    elif [ -n "$glued" ]; then
      words[-1]+=$word
      glued=''
    else
      words+=("$word")
    fi
  done
  if [[ $current == [=:] ]]; then
    [ ${#words[@]} != 0 ] && words[-1]+=$current
    glued=yes current=''
  fi

  # Before the current word: the command, its operands, an option without its value.
  local command='' operands=() option=''
  for word in "${words[@]}"; do
    if [ -n "$option" ]; then
      option=''
    elif [[ $word == --*= ]]; then
      option=${word%=}
    elif [[ $word == --device || $word == --for || $word == --record || $word == --speed ||
      $word == --output ]]; then
      option=$word
    elif [[ $word == -* ]]; then
      :
    elif [ -z "$command" ]; then
      command=$word
    else
      operands+=("$word")
    fi
  done

  COMPREPLY=()
  local answers=''
  case $option in
    --device) answers='simulated linux' ;;
    --record | --output) _quorvel_files "$current" ;;
  esac
  if [ -n "$option" ]; then
    :
  elif [ -n "$glued" ]; then
    return  # names of temperatures depend on the device
  elif [[ $current == -* ]]; then
    answers=$(_quorvel_options "$command")
  else
    case "$command ${#operands[@]} ${operands[0]-}" in
      ' 0 ') answers='demo watch get dump record play plot' ;;
      'watch 0 ') answers='battery sensors thermal' ;;
      'get 0 ') answers='battery sensors temperatures bcl' ;;
      watch*thermal)
        answers=$(_quorvel_types "${COMP_WORDS[0]}")
        compopt -o nospace 2>/dev/null || :
        ;;
      'record 0 ' | 'play 0 ' | 'plot 0 ') _quorvel_files "$current" ;;
    esac
  fi
  [ -z "$answers" ] || mapfile -t COMPREPLY < <(compgen -W "$answers" -- "$current")
}

complete -F _quorvel quorvel
