# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# Completion of quorvel's command line for fish. tests/monitor/usage_test.py compares it with the help.

# True if the command is one of the arguments, or not yet typed.
function __quorvel_takes
    for word in (commandline --tokenize --current-process --cut-at-cursor)[2..]
        if contains -- $word demo watch get dump record play plot
            contains -- $word $argv
            return
        end
    end
    true
end

# True if the word before the current one is one of the arguments.
function __quorvel_follows
    set -l words (commandline --tokenize --current-process --cut-at-cursor)
    contains -- $words[-1] $argv
end

# The types of temperatures, from the help of the program that is being completed.
function __quorvel_types
    set -l program (commandline --tokenize --current-process)[1]
    command $program watch --help 2>/dev/null |
        sed -n '/^TYPE is one of /,/\.$/ { s/^TYPE is one of //; s/[,.]/:/g; s/ /\n/g; p }'
end

complete -c quorvel -f
complete -c quorvel -n 'not __fish_seen_subcommand_from demo watch get dump record play plot' \
    -a 'demo watch get dump record play plot'
complete -c quorvel -n '__quorvel_follows watch' -a 'battery sensors thermal'
complete -c quorvel -n '__quorvel_follows get' -a 'battery sensors temperatures bcl'
complete -c quorvel -n '__fish_seen_subcommand_from watch; and __fish_seen_subcommand_from thermal' \
    -a '(__quorvel_types)'
complete -c quorvel -n '__quorvel_follows record play plot' -F

complete -c quorvel -n '__quorvel_takes demo watch get dump record' -l device \
    -x -a 'simulated linux' -d 'source of the values'
complete -c quorvel -n '__quorvel_takes watch record demo' -l for -x -d 'end after this time'
complete -c quorvel -n '__quorvel_takes demo play' -l record -r -F -d 'write a recording as well'
complete -c quorvel -n '__quorvel_takes record demo play' -l force -d 'overwrite the recording'
complete -c quorvel -n '__quorvel_takes play' -l speed -x -d 'speed factor'
complete -c quorvel -n '__quorvel_takes play' -l step -d 'play one event per Enter'
complete -c quorvel -n '__quorvel_takes plot' -l output -r -F -d 'output file'
complete -c quorvel -l json -d 'print one JSON object per line'
complete -c quorvel -l verbose -d 'print the debug log to standard error'
complete -c quorvel -s h -l help -d 'print the help'
complete -c quorvel -l version -d 'print the version'
