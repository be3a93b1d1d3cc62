# fish completion for vemo-shape
complete -c vemo-shape -f
complete -c vemo-shape -l bundle-id -x -d 'Identifier of the application in front'
complete -c vemo-shape -l app-name -x -d 'Name of the application in front'
complete -c vemo-shape -l dictionary -r -F -d 'Your dictionary'
complete -c vemo-shape -l snippets -r -F -d 'Your snippets'
complete -c vemo-shape -l slack -r -F -d 'Users and channels'
complete -c vemo-shape -l workspace -x -a '(__fish_complete_directories)' -d 'Project whose files can be tagged'
complete -c vemo-shape -l set -x -a 'integrationVSCode=true integrationVSCode=false integrationSlack=true integrationSlack=false' -d 'A switch'
complete -c vemo-shape -l jsonl -d 'Each line is a JSON string'
complete -c vemo-shape -l help -d 'Show a summary of the options'
