# fish completion for orvanel
complete -c orvanel -l new-window -d 'Open a window of its own'
complete -c orvanel -l translation -r -d 'Show the texts of a compiled translation'
complete -c orvanel -l help -d 'Show a summary and exit'
complete -c orvanel -l version -d 'Show the version and exit'
