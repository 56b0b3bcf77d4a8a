# bash completion of zephan-log

_zephan_log() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        --since | -S | --until | -U)
            COMPREPLY=($(compgen -W 'now today yesterday tomorrow' -- "$cur"))
            return
            ;;
        --output | -o)
            COMPREPLY=($(compgen -W 'short json cat' -- "$cur"))
            return
            ;;
        --cursor-file)
            _filedir
            return
            ;;
        --grep | -g | --exclude | --last | --lines | -n | --context | -C | --zone | --log-zone)
            return
            ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '$(_parse_help "$1")' -- "$cur"))
    else
        _filedir "@(xml|gz)"
    fi
} && complete -F _zephan_log zephan-log
