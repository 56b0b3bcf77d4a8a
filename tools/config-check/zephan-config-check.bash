# bash completion of zephan-config-check

_zephan_config_check() {
    local cur prev words cword split
    _init_completion -s || return
    if [[ $prev == --schedule || $prev == -s || $cur != -* ]]; then
        _filedir xml
        return
    fi
    COMPREPLY=($(compgen -W '$(_parse_help "$1")' -- "$cur"))
    [[ ${COMPREPLY-} == *= ]] && compopt -o nospace
} && complete -F _zephan_config_check zephan-config-check
