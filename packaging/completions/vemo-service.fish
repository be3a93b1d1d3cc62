# fish completion for vemo-service
complete -c vemo-service -f
complete -c vemo-service -l config -r -F -d 'Configuration to read'
complete -c vemo-service -s h -l help -d 'Show a summary of the commands'
complete -c vemo-service -l version -d 'Show the version'
complete -c vemo-service -n __fish_use_subcommand -a add-token -d 'Make an access token'
complete -c vemo-service -n __fish_use_subcommand -a accounts -d 'List the accounts'
complete -c vemo-service -n __fish_use_subcommand -a revoke-tokens -d 'End every token of an account'
complete -c vemo-service -n __fish_use_subcommand -a stats -d 'Summarise what clients have reported'
