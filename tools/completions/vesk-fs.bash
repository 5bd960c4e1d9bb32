# bash completion for vesk-fs

# Completes entry names of an archive. Names are untrusted text: compgen -W would
# run the commands in them.
_vesk_fs_entries() {
  local zip=${1//[\'\"\\]/} name
  zip=${zip/#\~\//$HOME/}
  while IFS= read -r name; do
    [[ $name == "$cur"* ]] && COMPREPLY+=("$(printf %q "$name")")
  done < <("$program" list "$zip" 2>/dev/null)
}

_vesk_fs_files() {
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen "$1" -- "$cur")
}

_vesk_fs() {
  local program=${COMP_WORDS[0]} cur=${COMP_WORDS[COMP_CWORD]}
  local command='' zip='' position=0 i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      --password | --password-file | --name | --encrypt | --method | --level | --jobs | -j) ((++i)) ;;
      -?*) ;;
      *)
        if [[ -z $command ]]; then
          command=${COMP_WORDS[i]}
        else
          [[ $position -eq 0 ]] && zip=${COMP_WORDS[i]}
          ((++position))
        fi
        ;;
    esac
  done

  COMPREPLY=()
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --password-file) _vesk_fs_files -f && return ;;
    --password | --name | --jobs | -j) return ;;
    --encrypt)
      mapfile -t COMPREPLY < <(compgen -W 'aes256 traditional' -- "$cur")
      return
      ;;
    --method)
      mapfile -t COMPREPLY < <(compgen -W 'deflate zstd' -- "$cur")
      return
      ;;
    --level)
      mapfile -t COMPREPLY < <(compgen -W '0 1 2 3 4 5 6 7 8 9' -- "$cur")
      return
      ;;
  esac

  local options='--help --quiet --verbose'
  local passwords='--password --password-file'
  local kept='--no-permissions --no-times --set-id'
  local packed="$kept --follow-links --no-directories"
  case $command in
    '') options+=' --version' ;;
    pack) options+=" --encrypt --method --level --jobs $passwords $packed" ;;
    unpack) options+=" --no-overwrite $passwords --no-links $kept" ;;
    list) options+=' --long --json' ;;
    test) options+=" $passwords" ;;
    extract) options+=" $passwords --no-links $kept" ;;
    add) options+=" --name --encrypt --method --level --jobs $passwords $packed" ;;
    sweep) options+=' --dry-run' ;;
  esac
  if [[ $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
    return
  fi

  local commands='pack unpack list test add remove extract tree copy sweep version xml'
  case $command:$position in
    :*) mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$cur") ;;
    xml:0) mapfile -t COMPREPLY < <(compgen -W get -- "$cur") ;;
    pack:0 | tree:0 | sweep:0 | unpack:1 | copy:1) _vesk_fs_files -d ;;
    list:0 | remove:0 | extract:0) _vesk_fs_files -f ;;
    list:* | remove:* | extract:1) _vesk_fs_entries "$zip" ;;
    *) _vesk_fs_files -f ;;
  esac
}

complete -F _vesk_fs vesk-fs
