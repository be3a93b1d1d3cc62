# bash completion for vemo

_vemo() {
  [[ $COMP_CWORD == 1 ]] || return
  mapfile -t COMPREPLY < <(compgen -W 'toggle start stop status quit sign-in cancel-sign-in sign-out --help --version --check' \
    -- "${COMP_WORDS[COMP_CWORD]}")
}
complete -F _vemo vemo
