# Completion of skarnel-render for bash.
_skarnel_render() {
    local cur prev words cword split
    _init_completion -s || return
    local settings='perspective-height perspective-width offset start gradient alpha image-perspective'
    case $prev in
        -o | --output | --recipe | --animate | --html)
            _filedir
            return
            ;;
        --watch)
            _filedir -d
            return
            ;;
        --format)
            mapfile -t COMPREPLY < <(compgen -W 'tiff png jpeg jp2 webp bmp' -- "$cur")
            return
            ;;
        --compression)
            mapfile -t COMPREPLY < <(compgen -W 'none lzw deflate' -- "$cur")
            return
            ;;
        --sweep)
            mapfile -t COMPREPLY < <(compgen -S = -W "$settings" -- "$cur")
            compopt -o nospace
            return
            ;;
        --perspective-height | --perspective-width | --offset | --start | --gradient | --alpha | \
            --image-perspective | --background-color | --quality | --preview | --max-pixels | \
            --text | --font | --size | --color | -j | --jobs | --memory | --frame-time)
            return
            ;;
    esac
    $split && return
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '-o -f -j -q -v -h --output --force --text --html --font --size --color
            --perspective-height --perspective-width --offset --start --gradient --alpha
            --image-perspective --apply-background-color --background-color --user-settings
            --recipe --format --quality --compression --preview --embed-recipe --max-pixels
            --jobs --memory --watch --sweep --animate --frame-time
            --quiet --verbose --json --help --version' -- "$cur")
        return
    fi
    _filedir '@(jpg|jpeg|jp2|bmp|png|tif|tiff|psd|webp|gif|jxl|heic|heif|avif)'
} &&
    complete -F _skarnel_render skarnel-render
