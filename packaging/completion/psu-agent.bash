# Bash completion of psu-agent. What it offers is what `psu-agent --help` and the commands' own
# --help say, so nothing is listed twice.
_psu_agent() {
  local program=$1 current=$2 previous=$3 command="" word help value
  [[ $previous != "=" || $COMP_CWORD -lt 3 ]] || previous=${COMP_WORDS[COMP_CWORD - 3]}
  COMPREPLY=()

  local commands
  commands=$("$program" --help 2>/dev/null | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z-]*\) .*/\1/p')
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ -z $command && $'\n'$commands$'\n' == *$'\n'"$word"$'\n'* ]]; then
      command=$word
    fi
  done
  help=$("$program" --help 2>/dev/null)
  [[ -z $command ]] || help+=$'\n'$("$program" "$command" --help 2>/dev/null)

  # What the option before the cursor takes, in capitals, such as FILE; empty for a switch.
  value=$(sed -nE "s/^  ${previous//[^a-z-]/} ([A-Z=]+)( .*|$)/\1/p" <<<"$help")
  case $value in
    FILE) ;;
    *SOURCE) ;;
    DIR)
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
    ?*) return ;;
    *)
      if [[ $current == -* ]]; then
        word=$(sed -nE 's/^  (-h,)?(--[a-z-]+).*/\2/p' <<<"$help")
        mapfile -t COMPREPLY < <(compgen -W "$word" -- "$current" | sort -u)
        return
      elif [[ -z $command ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
        return
      fi
      ;;
  esac
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$current")
}
complete -F _psu_agent psu-agent
