# Completion of skarnel for bash.
_skarnel() {
    local cur prev words cword
    _init_completion || return
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '-h --help --version' -- "$cur")
        return
    fi
    _filedir '@(jpg|jpeg|jp2|bmp|png|tif|tiff|psd|webp|gif|jxl|heic|heif|avif|skarnel)'
} &&
    complete -F _skarnel skarnel
