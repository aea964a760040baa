# Bash completion of psu-agent, which itself says what may stand at the end of a command line.
_psu_agent() {
  local words word kept offered before name
  read -ra words <<<"${COMP_LINE:0:COMP_POINT}"
  [[ ${COMP_LINE:0:COMP_POINT} != *[[:blank:]] ]] || words+=("")
  word=${words[-1]}
  # Bash breaks words at '=' and ':', and replaces what stands behind the last of them only.
  kept=${word%"${word##*[=:]}"}
  COMPREPLY=()
  while IFS=$'\t' read -r offered before; do
    case $offered in
      :files | :folders)
        compopt -o filenames 2>/dev/null
        [[ $word == "$before"* ]] || continue
        while IFS= read -r name; do
          COMPREPLY+=("$before$name")
        done < <(compgen "$([[ $offered == :files ]] && echo -f || echo -d)" -- "${word#"$before"}")
        ;;
      "$word"*)
        [[ $offered != *[=:] ]] || compopt -o nospace 2>/dev/null
        COMPREPLY+=("$offered")
        ;;
    esac
  done < <("$1" complete -- "${words[@]:1}" 2>/dev/null)
  COMPREPLY=("${COMPREPLY[@]#"$kept"}")
}
complete -F _psu_agent psu-agent
