# SPDX-License-Identifier: MIT
# Completion of kelvo-test-gui for bash: its two options, and names of files.
_kelvo_test_gui()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    case $before in
        -style | -display | -geometry | -title | -icon)
            return
            ;;
        -platform)
            mapfile -t COMPREPLY < <(compgen -W "xcb wayland offscreen" -- "$word")
            return
            ;;
    esac
    if [[ $word == -* ]]; then
        # They mean something as the only argument.
        local options="-display -platform -style -stylesheet"
        if [ "$COMP_CWORD" -eq 1 ]; then options="--help --version $options"; fi
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
        return
    fi
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
}
complete -F _kelvo_test_gui kelvo-test-gui
