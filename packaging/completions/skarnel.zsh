#compdef skarnel
# Completion of skarnel for zsh.

_arguments -S \
    '(- *)'{-h,--help}'[show how the program is called]' \
    '(- *)--version[show the version]' \
    '*:picture or recipe:_files -g "*.(#i)(jpg|jpeg|jp2|bmp|png|tif|tiff|psd|webp|gif|jxl|heic|heif|avif|skarnel)"'
