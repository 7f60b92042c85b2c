# Completion of qnpp's command line for fish.

complete -c qnpp -s I -x -d 'Add a directory for searching include files' \
    -a '(__fish_complete_directories (commandline -ct | string replace -r -- "^-I" ""))'
complete -c qnpp -s D -x -d 'Define a macro'
complete -c qnpp -s o -r -d 'Write the result to a file'
complete -c qnpp -s s -x -d 'Name of the source in messages'
complete -c qnpp -s v -l version -d 'Show the version'
complete -c qnpp -s h -l help -d 'Show a summary of the options'
