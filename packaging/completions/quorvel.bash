# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# Completion of quorvel's command line for bash: source this, or install it as
# /usr/share/bash-completion/completions/quorvel. The program itself knows the candidates.

_quorvel() {
  local line=${COMP_LINE:0:COMP_POINT} words current stem
  read -ra words <<<"$line"
  [[ $line == *[[:space:]] ]] && words+=('')
  current=${words[-1]}
  mapfile -t COMPREPLY < <("${words[0]}" --complete "${words[@]:1}" 2>/dev/null | cut -f 1)
  stem=${current%"${current##*[=:]}"} # bash replaces only what follows the last = or :
  if [ "${COMPREPLY[*]}" = :files ]; then
    compopt -o filenames 2>/dev/null || : # fails outside a completion
    mapfile -t COMPREPLY < <(compgen -f -- "${current#--*=}")
    return
  fi
  COMPREPLY=("${COMPREPLY[@]#"$stem"}")
  [[ ${COMPREPLY[*]} != *: ]] || compopt -o nospace 2>/dev/null || :
}

complete -F _quorvel quorvel
