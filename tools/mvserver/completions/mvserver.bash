# bash completion for mvserver, written by 'mvserver completion bash'
_mvserver() {
    local word path= verbs= options= cur=${COMP_WORDS[COMP_CWORD]}
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case "${path:+$path }$word" in
            'send'|'env'|'env list'|'env show'|'env url'|'sign'|'verify'|'shutdown'|'doctor'|'completion'|'version')
                path="${path:+$path }$word" ;;
        esac
    done
    case "$path" in
        '')
            verbs='send env sign verify shutdown doctor completion version'
            options='--help -h --version --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'send')
            verbs=''
            options='--help -h --header -H --url --env --data -d --output -o --stream --text --compressed --fail --session --password-file --user --domain --password-fd --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'env')
            verbs='list show url'
            options='--help -h --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'env list')
            verbs=''
            options='--help -h --server-version --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'env show')
            verbs=''
            options='--help -h --service --property --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'env url')
            verbs=''
            options='--help -h --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'sign')
            verbs=''
            options='--help -h --output-dir --one-by-one --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'verify')
            verbs=''
            options='--help -h --ca --signature --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'shutdown')
            verbs=''
            options='--help -h --header -H --session --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'doctor')
            verbs=''
            options='--help -h --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'completion')
            verbs=''
            options='--help -h --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
        'version')
            verbs=''
            options='--help -h --json --verbose -v --progress --no-progress --hub --ca-file --timeout --connect-timeout --idle-timeout --log-dir --log-level' ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    else
        COMPREPLY=($(compgen -W "$verbs" -- "$cur"))
    fi
}
complete -o default -F _mvserver mvserver
