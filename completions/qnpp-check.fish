# Completion of qnpp-check's command line for fish: that of qnpp, and what qnpp-check has beyond it.

set -l ids byte-order-mark comment-in-string directive-as-text divisor-in-condition lone-hash no-guard \
    number-with-macro output-is-source pragma-once string-with-escape unknown-directive unused-macro words-behind-else

complete -c qnpp-check -s I -x -d 'Add a directory for searching include files' \
    -a '(__fish_complete_directories (commandline -ct | string replace -r -- "^-I" ""))'
complete -c qnpp-check -s D -x -d 'Define a macro'
complete -c qnpp-check -s o -r -d 'The output of qnpp; nothing is written there'
complete -c qnpp-check -s s -x -d 'Name of the source in messages'
complete -c qnpp-check -s v -l version -d 'Show the version'
complete -c qnpp-check -s h -l help -d 'Show a summary of the options'
complete -c qnpp-check -l format -x -a 'text json sarif' -d 'Form of the findings'
complete -c qnpp-check -l disable -x -a "$ids" -d 'Leave out findings of this sort'
complete -c qnpp-check -l enable -x -a "$ids" -d 'Look for a sort that is off by default'
complete -c qnpp-check -l error -d 'End with status 1 if anything was found'
