# Completes the commands and options of brimlow-make in bash, once it has read this file with "source".
#
# Written by brimlow-pages from the program's table of commands; not edited by hand.

_brimlow_make()
{
    local line=${COMP_LINE:0:COMP_POINT} command='' option='' offer=nothing names='' values='' pack='' words='' word before
    local value=${line##*[[:space:]]}
    local -a given arguments
    read -ra given <<<"${line%"$value"}"
    command=${given[1]-}
    case $command in
    '' | help) arguments=(word) words='new build check open diff graph list inspect extract add create remove wrap unwrap help' names='--help --version' ;;
    new) names='--help' values='' arguments=(/ nothing nothing) ;;
    build) names='--output --json --help' values='-o --output' arguments=(.lua nothing nothing) ;;
    check) names='--json --help' values='' arguments=('[dl][pu][ka]' nothing nothing) ;;
    open) names='--output --help' values='-o --output' arguments=(dpk nothing nothing) ;;
    diff) names='--json --help' values='' arguments=('[dl][pu][ka]' '[dl][pu][ka]' nothing) ;;
    graph) names='--output --textures --help' values='-o --output' arguments=('[dl][pu][ka]' nothing nothing) ;;
    list) names='--json --help' values='' arguments=(dpk nothing nothing) ;;
    inspect) names='--output --bpm --beats-per-bar --first-beat --json --help' values='-o --output --bpm --beats-per-bar --first-beat' arguments=('' entry nothing) ;;
    extract) names='--force --prefix --help' values='--prefix' arguments=(dpk / entry) ;;
    add) names='--directory --help' values='-C --directory' arguments=(dpk '' '') ;;
    create) names='--directory --force --help' values='-C --directory' arguments=(dpk '' '') ;;
    remove) names='--help' values='' arguments=(dpk entry entry) ;;
    wrap) names='--force --help' values='' arguments=('' '' nothing) ;;
    unwrap) names='--force --help' values='' arguments=('' '' nothing) ;;
    esac

    for word in "${given[@]:2}"; do
        if [ -n "$option" ]; then
            option=
        elif [[ " $values " == *" $word "* ]]; then
            option=$word
        elif [[ $word != -* ]]; then
            pack=${pack:-$word}
            [ ${#arguments[@]} -le 1 ] || arguments=("${arguments[@]:1}")
        fi
    done
    case $value in
    --*=*) option=${value%%=*} value=${value#*=} ;;
    esac
    offer=${arguments[0]-nothing}
    if [ -n "$option" ]; then
        case "$command $option" in
        'build -o' | 'build --output') offer=dpk ;;
        'open -o' | 'open --output') offer=/ ;;
        'graph -o' | 'graph --output') offer='' ;;
        'inspect -o' | 'inspect --output') offer='' ;;
        'inspect --bpm') offer=nothing ;;
        'inspect --beats-per-bar') offer=nothing ;;
        'inspect --first-beat') offer=nothing ;;
        'extract --prefix') offer=nothing ;;
        'add -C' | 'add --directory') offer=/ ;;
        'create -C' | 'create --directory') offer=/ ;;
        esac
    elif [[ $value == -* ]]; then
        offer=word words=$names
    elif [ "$offer" = entry ]; then
        offer=nothing
        mapfile -t COMPREPLY < <(brimlow-make list -- "$pack" 2>/dev/null | cut -c 13- | while IFS= read -r name
            do [[ $name != "$value"* ]] || printf '%s\n' "$name"; done)
        return
    fi

    COMPREPLY=()
    case $offer in
    nothing) return ;;
    word) mapfile -t COMPREPLY < <(compgen -W "$words" -- "$value") ;;
    words)
        before=${value%"${value##*,}"}
        mapfile -t COMPREPLY < <(compgen -P "$before" -W "$words" -- "${value##*,}")
        ;;
    *)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -d -- "$value"; compgen -f -X "!*$offer" -- "$value" | while IFS= read -r name
            do [ -d "$name" ] || printf '%s\n' "$name"; done)
        ;;
    esac
    before=${value%"${value##*[=:]}"}
    COMPREPLY=("${COMPREPLY[@]#"$before"}")
}
complete -F _brimlow_make brimlow-make
