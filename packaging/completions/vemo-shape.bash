# bash completion for vemo-shape

_vemo_shape() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} choices='' kind=-W
  # To bash the `=` of a switch is a word of its own.
  [[ $word != = ]] || { before='=' && word=''; }
  case $before in
    =) choices='true false' ;;
    --dictionary | --snippets | --slack) kind=-f ;;
    --workspace) kind=-d ;;
    --bundle-id | --app-name) return ;;
    --set) choices='integrationVSCode=true integrationVSCode=false integrationSlack=true integrationSlack=false' ;;
    *) choices='--bundle-id --app-name --dictionary --snippets --slack --workspace --set --jsonl --help' ;;
  esac
  if [[ $kind == -W ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen "$kind" -- "$word")
  fi
}
complete -o filenames -F _vemo_shape vemo-shape
