# Completes the options of brimlow-render in bash, once it has read this file with "source".
#
# Written by brimlow-pages from the program's table of options; not edited by hand.

_brimlow_render()
{
    local line=${COMP_LINE:0:COMP_POINT} option='' offer=dpk words='' before
    local value=${line##*[[:space:]]}
    local -a given
    read -ra given <<<"${line%"$value"}"
    case $value in
    --*=*) option=${value%%=*} value=${value#*=} ;;
    -*)
        offer=word
        words='--size --aspect --path --samples --caps --seed --tile --window --fps --from --to --at --loading --output --png-level --crf --ffmpeg --contact-sheet --shots --flashes --times --commands --compare --yes --no --verbose --quiet --help --version'
        ;;
    *) [ ${#given[@]} -eq 0 ] || option=${given[-1]} ;;
    esac
    case $option in
    --size) offer=nothing ;;
    --aspect) offer=word words='auto 4:3 16:9 16:10' ;;
    --path) offer=word words='glsl fixed' ;;
    --samples) offer=nothing ;;
    --caps) offer=words words='no-vbo no-pbo no-npot no-compression no-combine4 no-combine3 units=1 units=2 units=3 units=4' ;;
    --seed) offer=nothing ;;
    --tile) offer=nothing ;;
    --fps) offer=nothing ;;
    --from) offer=nothing ;;
    --to) offer=nothing ;;
    --at) offer=nothing ;;
    --loading) offer=nothing ;;
    -o | --output) offer='' ;;
    --png-level) offer=nothing ;;
    --crf) offer=nothing ;;
    --ffmpeg) offer=nothing ;;
    --contact-sheet) offer=.png ;;
    --shots) offer=/ ;;
    --times) offer='' ;;
    --commands) offer='' ;;
    --compare) offer=/ ;;
    esac

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
complete -F _brimlow_render brimlow-render
