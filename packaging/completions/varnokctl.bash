# Completion of varnokctl for bash.
# shellcheck disable=SC2207 # No name that is completed has a blank.

# Names under a command of varnokctl that answers JSON, with the options of the
# line that choose the home and the store.
_varnokctl_names() {
  local field=$1 i
  shift
  local -a where=()
  for ((i = 1; i < cword; i++)); do
    case ${words[i]} in --home | --store) where+=("${words[i]}" "${words[i + 1]}") ;; esac
  done
  varnokctl "${where[@]}" --quiet --json "$@" 2>/dev/null | grep -o "$field" | cut -d'"' -f4
}

_varnokctl() {
  local cur prev words cword
  _init_completion || return
  local i command="" under=""
  for ((i = 1; i < cword; i++)); do
    case ${words[i]} in
      --home | --store | --language | --set | --port | --bind | --host-name | --type | --to) ((i++)) ;;
      -*) ;;
      *) if [[ -z $command ]]; then command=${words[i]}; elif [[ -z $under ]]; then under=${words[i]}; fi ;;
    esac
  done

  case $prev in
    --home) _filedir -d; return ;;
    --store) COMPREPLY=($(compgen -W "sqlite eds" -- "$cur")); return ;;
    --type) COMPREPLY=($(compgen -W "vcf csv" -- "$cur")); return ;;
    --language) COMPREPLY=($(compgen -W "en de es fr it tr el he" -- "$cur")); return ;;
    --set) COMPREPLY=($(compgen -S = -W "$(varnokctl settings 2>/dev/null | cut -d' ' -f1)" -- "$cur")); compopt -o nospace; return ;;
    --bind) _available_interfaces; return ;;
    --port | --to | --host-name) return ;;
  esac

  local global="--home --store --language --set --json --quiet --help"
  local words_here=
  case $command/$under in
    /) words_here="import contacts duplicates stores backup backups serve reminder dropbox settings shell --version" ;;
    import/*) [[ $cur == -* ]] || { _filedir '@(vcf|vcard)'; return; } ;;
    contacts/) words_here="show remove" ;;
    contacts/remove) words_here="--all --yes" ;;
    duplicates/*) words_here="--remove --yes" ;;
    backup/*) words_here="--type --multiple --single" ;;
    backups/) words_here="mail upload open delete --all" ;;
    backups/mail) words_here="--to $(_varnokctl_names '"name":"[^"]*"' backups --all)" ;;
    backups/*) words_here=$(_varnokctl_names '"name":"[^"]*"' backups --all) ;;
    serve/*) words_here="--port --bind --access-code --read-only --host-name --request-log" ;;
    reminder/) words_here="schedule deliver" ;;
    reminder/deliver) words_here="--if-due --wait" ;;
    dropbox/) words_here="link unlink list get put" ;;
    dropbox/put) words_here=$(_varnokctl_names '"name":"[^"]*"' backups --all) ;;
    settings/) words_here="get set reset" ;;
    settings/*) words_here=$(varnokctl settings 2>/dev/null | cut -d' ' -f1) ;;
  esac
  [[ $cur == -* || -n $words_here ]] && COMPREPLY=($(compgen -W "$words_here $([[ $cur == -* ]] && echo "$global")" -- "$cur"))
}

complete -F _varnokctl varnokctl
