# fish completion for vemo
complete -c vemo -f
complete -c vemo -s h -l help -d 'Show a summary of the commands'
complete -c vemo -l version -d 'Show the version'
complete -c vemo -l check -d 'Show the version where it can run here, without starting it'
complete -c vemo -n __fish_use_subcommand -a toggle -d 'Start or stop a dictation'
complete -c vemo -n __fish_use_subcommand -a start -d 'Start a dictation'
complete -c vemo -n __fish_use_subcommand -a stop -d 'End the dictation and paste its text'
complete -c vemo -n __fish_use_subcommand -a status -d 'Say how the dictation stands'
complete -c vemo -n __fish_use_subcommand -a quit -d 'End Vemo'
complete -c vemo -n __fish_use_subcommand -a sign-in -d 'Open the page on which you sign in'
complete -c vemo -n __fish_use_subcommand -a cancel-sign-in -d 'Wait for that page no longer'
complete -c vemo -n __fish_use_subcommand -a sign-out -d 'Forget the account on this machine'
