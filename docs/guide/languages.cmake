# The languages of the guide, named as the window's catalogues, English first: its pages lie in the
# guide's folder itself, the others' in folders of their names.
set(SKARNEL_GUIDE_LANGUAGES en de es fr ja zh_CN)
set(SKARNEL_GUIDE_PAGES index settings text saving scripting)

# What a language calls itself, and the five pages in the bar at the head of each.
set(name_en "English")
set(bar_en "Guide" "Settings" "Text" "Saving" "Command line")
set(name_de "Deutsch")
set(bar_de "Handbuch" "Einstellungen" "Text" "Speichern" "Befehlszeile")
set(name_es "Español")
set(bar_es "Guía" "Ajustes" "Texto" "Guardar" "Línea de órdenes")
set(name_fr "Français")
set(bar_fr "Guide" "Réglages" "Texte" "Enregistrer" "Ligne de commande")
set(name_ja "日本語")
set(bar_ja "ガイド" "設定" "テキスト" "保存" "コマンドライン")
set(name_zh_CN "简体中文")
set(bar_zh_CN "指南" "设置" "文字" "保存" "命令行")
# The bar's own name, for those who hear it.
set(languages_en "Language")
set(languages_de "Sprache")
set(languages_es "Idioma")
set(languages_fr "Langue")
set(languages_ja "言語")
set(languages_zh_CN "语言")

# Where a language's pages lie below the guide, with a slash behind it.
function(skarnel_guide_folder result language)
    set(${result} "${language}/" PARENT_SCOPE)
    if(language STREQUAL "en")
        set(${result} "" PARENT_SCOPE)
    endif()
endfunction()
