# bash completion of krx-agent-sim

_krx_agent_sim() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        --module | --trace | --report | --config | -o)
            _filedir
            return
            ;;
        --patience | --http)
            return
            ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '$(_parse_help "$1")' -- "$cur"))
    elif ((cword == 1)); then
        COMPREPLY=($(compgen -W 'replay run' -- "$cur"))
    else
        _filedir scenario
    fi
} && complete -F _krx_agent_sim krx-agent-sim
