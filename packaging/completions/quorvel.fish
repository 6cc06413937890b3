# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# Completion of quorvel's command line for fish. The program itself knows the candidates.

function __quorvel_candidates
    set -l words (commandline --tokenize --current-process --cut-at-cursor)
    set -l current (commandline --current-token --cut-at-cursor)
    set -l candidates (command $words[1] --complete $words[2..] "$current" 2>/dev/null)
    if test "$candidates" = :files
        __fish_complete_path (string replace --regex '^--[a-z]+=' '' -- $current)
    else
        printf '%s\n' $candidates
    end
end

complete -c quorvel -f -a '(__quorvel_candidates)'
