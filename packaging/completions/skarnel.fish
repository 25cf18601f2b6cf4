# Completion of skarnel for fish.
set -l c complete -c skarnel

$c -s h -l help -d 'Show how the program is called'
$c -l version -d 'Show the version'
