# fish completion for orvanel-cli
complete -c orvanel-cli -n __fish_use_subcommand -f -a info -d 'Describe a document or image as JSON'
complete -c orvanel-cli -n __fish_use_subcommand -f -a convert -d 'Write it in another format'
complete -c orvanel-cli -n __fish_use_subcommand -f -a run -d 'Run the steps of a script'
complete -c orvanel-cli -n '__fish_seen_subcommand_from run' -l time -d 'Print the duration of each step'
complete -c orvanel-cli -n __fish_use_subcommand -f -a recover -d 'List or restore what was left unsaved'
complete -c orvanel-cli -n '__fish_seen_subcommand_from recover' -l discard -d 'Remove it'
complete -c orvanel-cli -n __fish_use_subcommand -l help -d 'Show a summary and exit'
complete -c orvanel-cli -n __fish_use_subcommand -l version -d 'Show the version and exit'
