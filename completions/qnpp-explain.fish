# Completion of qnpp-explain's command line for fish: that of qnpp, and what qnpp-explain has beyond it.

complete -c qnpp-explain -s I -x -d 'Add a directory for searching include files' \
    -a '(__fish_complete_directories (commandline -ct | string replace -r -- "^-I" ""))'
complete -c qnpp-explain -s D -x -d 'Define a macro'
complete -c qnpp-explain -s o -r -d 'The output of qnpp; nothing is written there'
complete -c qnpp-explain -s s -x -d 'Name of the source in messages'
complete -c qnpp-explain -s v -l version -d 'Show the version'
complete -c qnpp-explain -s h -l help -d 'Show a summary of the options'
complete -c qnpp-explain -l macro -x -d 'Show only what involves this macro'
complete -c qnpp-explain -l html -r -d 'Write a page for a browser'
complete -c qnpp-explain -l json -d 'Write everything as JSON'
complete -c qnpp-explain -l color -x -a 'auto always never' -d 'Whether to use colours'
complete -c qnpp-explain -l width -x -d 'Columns of the terminal'
complete -c qnpp-explain -l most -x -d 'Steps after which the rest is left out'
complete -c qnpp-explain -l most-uses -x -d 'Uses of macros that a page takes apart'
