# bash completion of zephan-status

_zephan_status() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        --config | --schedule)
            _filedir xml
            return
            ;;
        --clock)
            return
            ;;
    esac
    COMPREPLY=($(compgen -W '$(_parse_help "$1")' -- "$cur"))
} && complete -F _zephan_status zephan-status
