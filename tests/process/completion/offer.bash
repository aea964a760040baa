# offer.bash SCRIPT LINE...: each LINE, and indented what completion makes of its last word.
source "$1"
for COMP_LINE in "${@:2}"; do
  COMP_POINT=${#COMP_LINE}
  _psu_agent psu-agent
  kept=${COMP_LINE##*[[:blank:]]}
  kept=${kept%"${kept##*[=:]}"}
  printf '%s\n' "$COMP_LINE"
  [[ ${#COMPREPLY[@]} -eq 0 ]] || printf '\t%s\n' "${COMPREPLY[@]/#/$kept}"
done
