# bash completion of zephan-log

_zephan_log() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        --since | --until)
            COMPREPLY=($(compgen -W 'now today yesterday' -- "$cur"))
            return
            ;;
        --grep | -g | --exclude | --last | -n | --zone | --log-zone)
            return
            ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '$(_parse_help "$1")' -- "$cur"))
    else
        _filedir xml
    fi
} && complete -F _zephan_log zephan-log
