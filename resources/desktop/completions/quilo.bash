# bash completion for quilo
_quilo()
{
    local cur prev words cword
    _init_completion || return

    local commands="icns info extract set-icon remove-icon get-icon copy-icon paste-icon
        create-thumbnails restore-thumbnails save-as-icns request
        install-file-manager-actions uninstall-file-manager-actions"
    if [[ $cword -eq 1 ]]; then
        COMPREPLY=($(compgen -W "$commands --help --version" -- "$cur"))
        return
    fi

    case $prev in
        --output) _filedir -d; return ;;
        --interpolation) COMPREPLY=($(compgen -W "high low none default" -- "$cur")); return ;;
        --jobs) return ;;
        --for) COMPREPLY=($(compgen -W "all nautilus nemo caja dolphin thunar" -- "$cur")); return ;;
    esac

    local options="--help"
    case ${words[1]} in
        icns) options+=" --output --interpolation --jobs" ;;
        extract) options+=" --output" ;;
        set-icon) options+=" --compatibility" ;;
        create-thumbnails | restore-thumbnails) options+=" --keep-dates --no-keep-dates" ;;
        save-as-icns) options+=" --output --keep-dates --no-keep-dates" ;;
        install-file-manager-actions | uninstall-file-manager-actions) options+=" --for" ;;
        request)
            if [[ $cword -eq 2 ]]; then
                COMPREPLY=($(compgen -W "create-thumbnails restore-thumbnails save-as-icns" -- "$cur"))
                return
            fi ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi
    _filedir
} && complete -F _quilo quilo
