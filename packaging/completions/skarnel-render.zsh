#compdef skarnel-render
# Completion of skarnel-render for zsh.

local -a settings
settings=(perspective-height perspective-width offset start gradient alpha image-perspective)

_arguments -S \
    '(-o --output)'{-o,--output}'[file or folder to write]:output:_files' \
    '(-f --force)'{-f,--force}'[replace files that are there]' \
    '--text[reflect this text]:text:' \
    '--html[reflect the styled text of an HTML file]:HTML file:_files' \
    '--font[typeface of the text]:family:' \
    '--size[size of the text in points]:points:' \
    '--color[colour of the text]:#RRGGBB:' \
    '--perspective-height[height of the reflection, percent of the picture]:number:' \
    '--perspective-width[widening at its far edge, percent a side]:number:' \
    '--offset[gap below the picture, percent of the reflection]:number:' \
    '--start[lift of the fade, percent of the reflection]:number:' \
    '--gradient[fade exponent times ten]:number:' \
    '--alpha[opacity at the seam, 0 to 255]:number:' \
    '--image-perspective[turn of the whole, 0 to 100]:number:' \
    '--apply-background-color[lay the background colour under the whole]' \
    '--background-color[background, also under JPEGs]:#RRGGBB:' \
    "--user-settings[start from the application's settings]" \
    '--recipe[start from a recipe, or from a picture that carries one]:recipe:_files' \
    '--format[format of the result]:format:(tiff png jpeg jp2 webp bmp)' \
    '--quality[0 to 100]:quality:' \
    '--compression[of TIFF or PNG]:compression:(none lzw deflate)' \
    '--preview[shrink the picture, then the result, to fit]:WxH:' \
    '--embed-recipe[keep settings and text inside the TIFF, PNG or JPEG]' \
    '--max-pixels[refuse larger pictures]:pixels:' \
    '(-j --jobs)'{-j,--jobs}'[pictures at a time]:jobs:' \
    '--memory[memory for all of them together]:bytes:' \
    '--watch[render what appears in a folder]:folder:_files -/' \
    '--sweep[numbered frames, one setting running]:setting:($settings)' \
    '--animate[the frames of --sweep as one file]:file:_files' \
    '--frame-time[milliseconds a frame of --animate]:milliseconds:' \
    '(-q --quiet)'{-q,--quiet}'[only errors]' \
    '(-v --verbose)'{-v,--verbose}'[sizes and times too]' \
    '--json[one JSON object a picture]' \
    '(- *)'{-h,--help}'[show the options]' \
    '(- *)--version[show the version]' \
    '*:picture:_files -g "*.(#i)(jpg|jpeg|jp2|bmp|png|tif|tiff|psd|webp|gif|jxl|heic|heif|avif)"'
