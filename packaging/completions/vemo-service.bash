# bash completion for vemo-service

_vemo_service() {
  local word=${COMP_WORDS[COMP_CWORD]}
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --config) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    revoke-tokens) ;;
    *) mapfile -t COMPREPLY < <(compgen -W 'add-token accounts revoke-tokens stats --config --help --version' -- "$word") ;;
  esac
}
complete -o filenames -F _vemo_service vemo-service
