# bash completion of zephan-session

_zephan_session() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        --config | --output | -o)
            _filedir "@(xml|html)"
            return
            ;;
        --clock)
            return
            ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '$(_parse_help "$1")' -- "$cur"))
    else
        _filedir "@(xml|gz|jsonl)"
    fi
} && complete -F _zephan_session zephan-session
