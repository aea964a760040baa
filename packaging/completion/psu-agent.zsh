#compdef psu-agent
# Zsh completion of psu-agent, which itself says what may stand at the end of a command line.
_psu_agent() {
  local offered before
  local -a open closed files
  while IFS=$'\t' read -r offered before; do
    case $offered in
      :files) files=("$before" _files) ;;
      :folders) files=("$before" _files -/) ;;
      *[=:]) open+=("${offered//:/\\:}:$before") ;;
      *) closed+=("${offered//:/\\:}:$before") ;;
    esac
  done < <("${words[1]}" complete -- "${(@)words[2,CURRENT-1]}" "$PREFIX" 2>/dev/null)
  _describe psu-agent closed -- open -S ''
  if (( $#files )) && { [[ -z $files[1] ]] || compset -P "${(b)files[1]}" }; then
    "${(@)files[2,-1]}"
  fi
}
_psu_agent "$@"
