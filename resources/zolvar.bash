# Completion of zolvar(1) for bash.

_zolvar_names() {
  zolvar list --json 2>/dev/null | sed -n 's/^ *"name": "\(.*\)",\{0,1\}$/\1/p'
}

_zolvar_paths() {  # NAME: files in conflict
  zolvar conflicts "$1" --json 2>/dev/null | sed -n 's/^ *"path": "\(.*\)",\{0,1\}$/\1/p'
}

_zolvar_versions() {  # NAME: ids of versions in conflict
  zolvar conflicts "$1" --json 2>/dev/null | sed -n 's/^ *"id": "\(.*\)",\{0,1\}$/\1/p'
}

_zolvar_missing() {  # NAME: files that are still to be fetched
  zolvar missing "$1" --json 2>/dev/null | sed -n 's/^ *"\(.*\)",\{0,1\}$/\1/p'
}

_zolvar_users() {  # NAME: user ids
  zolvar participants "$1" --json 2>/dev/null | sed -n 's/^ *"userId": "\(.*\)",\{0,1\}$/\1/p'
}

_zolvar_kept() {  # NAME PATH: times of kept versions
  zolvar versions "$1" "$2" --json 2>/dev/null | sed -n 's/^ *"when": "\(.*\)",\{0,1\}$/\1/p'
}

# Offers the lines of standard input that begin with the current word, quoted for the shell.
_zolvar_offer() {
  local line
  while IFS= read -r line; do
    [[ $line == "$cur"* ]] && COMPREPLY+=("$(printf '%q' "$line")")
  done
}

_zolvar() {
  local cur=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} position=$((COMP_CWORD - 1))
  local commands="share subscribe unsubscribe remove password list participants missing conflicts
    tree use drop fetch versions restore sync question answer give-up ignore pause resume get set
    status watch quit"
  local name=${COMP_WORDS[2]}
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    COMPREPLY=($(compgen -W "$commands --help --version" -- "$cur"))
    return
  fi
  if [[ $cur == -* ]]; then
    local options=--help
    case $command in
      share) options+=" --addresses --password-stdin" ;;
      subscribe) options+=" --password-stdin" ;;
      remove) options+=" --yes" ;;
      sync) options+=" --wait" ;;
      pause) options+=" --for" ;;
      ignore) options+=" --undo" ;;
      list | participants | missing | conflicts | tree | versions | question | status | get) options+=" --json" ;;
    esac
    COMPREPLY=($(compgen -W "$options" -- "$cur"))
    return
  fi
  case $command:$position in
    share:1 | subscribe:2 | fetch:4) compopt -o filenames; COMPREPLY=($(compgen -f -- "$cur")) ;;
    subscribe:1 | unsubscribe:1 | remove:1 | password:1 | participants:1 | missing:1 | \
      conflicts:1 | tree:1 | use:1 | drop:1 | fetch:1 | answer:1 | versions:1 | restore:1 | \
      give-up:1 | ignore:1 | pause:1 | resume:1 | sync:*)
      _zolvar_offer < <(_zolvar_names) ;;
    tree:2 | use:2 | drop:2 | fetch:2) _zolvar_offer < <(_zolvar_paths "$name") ;;
    use:3 | drop:3 | fetch:3) _zolvar_offer < <(_zolvar_versions "$name") ;;
    give-up:2) _zolvar_offer < <(_zolvar_missing "$name") ;;
    ignore:2) _zolvar_offer < <(_zolvar_users "$name") ;;
    restore:3) _zolvar_offer < <(_zolvar_kept "$name" "${COMP_WORDS[3]}") ;;
    answer:2) COMPREPLY=($(compgen -W "reget delete" -- "$cur")) ;;
    get:1 | set:1)
      COMPREPLY=($(compgen -W "AddressBook AddressBookFolder AutosyncingEnabled BWLimitIn BWLimitOut DontUseGrowl-
        HeadlessDeleteAnswer KnownVersion NSShowNonLocalizedStrings OwnCard Pace QMPool- ShowOnlyActivePools
        SuppressPoolDeactivationWarning SuppressPoolDeletionWarning SuppressSwitchBranchWarning
        TimeServer1 TimeServer2 VersionsDays VersionsMegabytes activePools" -- "$cur")) ;;
    set:2)
      case $name in
        AddressBook) COMPREPLY=($(compgen -W "auto eds folder" -- "$cur")) ;;
        Pace) COMPREPLY=($(compgen -W "normal quick" -- "$cur")) ;;
        Suppress* | ShowOnlyActivePools | DontUseGrowl-* | AutosyncingEnabled)
          COMPREPLY=($(compgen -W "yes no" -- "$cur")) ;;
        HeadlessDeleteAnswer) COMPREPLY=($(compgen -W "ask reget delete" -- "$cur")) ;;
      esac ;;
  esac
}

complete -F _zolvar zolvar
