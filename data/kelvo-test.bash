# SPDX-License-Identifier: MIT
# Completion of kelvo-test for bash: verbs, options and their values, from what the program says of itself.
_kelvo_test()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} program=${COMP_WORDS[0]}
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        local verbs
        verbs=$("$program" --help 2>/dev/null | sed -n 's/^  \([a-z]*\) .*/\1/p')
        mapfile -t COMPREPLY < <(compgen -W "$verbs --help --version" -- "$word")
        return
    fi
    case $before in
        --on)
            # Those that answer at once: nobody waits for a completion.
            local uuids
            uuids=$("$program" list --wait 1s 2>/dev/null | sed -n '/^Renderers:/,/^Sources/s/^  \([^ ]*\) .*/\1/p')
            mapfile -t COMPREPLY < <(compgen -W "all $uuids" -- "$word")
            return
            ;;
        --format)
            local formats
            formats=$("$program" media --help 2>/dev/null | sed -n 's/.*with commas: \(.*\); all .*/\1/p')
            mapfile -t COMPREPLY < <(compgen -W "${formats//,/}" -- "$word")
            return
            ;;
        --ear | --eye | --wait | --for | --repeat | --seed | --shard | --serve-at | --only | --tolerance | --run | --title | --seconds | --songs | --videos)
            return
            ;;
    esac
    if [[ $word == -* ]]; then
        local options
        options=$("$program" "${COMP_WORDS[1]}" --help 2>/dev/null | sed -n 's/^  \(-[a-z-]*\).*/\1/p')
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
        return
    fi
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
}
complete -F _kelvo_test kelvo-test
