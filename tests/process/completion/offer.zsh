# offer.zsh SCRIPT LINE...: each LINE, and indented what completion makes of its last word.
if [[ ! -o interactive ]]; then
  # Zsh completes on a terminal only: the rest runs in a shell that has one, and tells it here.
  zmodload zsh/zpty
  exec 3>&1
  zpty shell zsh -f -i
  zpty -w shell "source ${(q)0} ${(@q)@}"
  while zpty -r shell; do :; done >/dev/null
  exit
fi

autoload -Uz compinit
compinit -u -D
functions[_psu-agent]=$(<$1)
compdef _psu-agent psu-agent
lines=("${@:2}")

compadd() {
  local -a hidden asked matches
  zparseopts -E -a asked A: D: O: p:=hidden
  if (( $#asked )); then
    builtin compadd "$@"
    return
  fi
  builtin compadd -O matches "$@"
  (( ! $#matches )) || printf '\t%s\n' "$IPREFIX${hidden[2]}"${^matches} >&3
  builtin compadd "$@"
}

zle -C offer-matches list-choices _main_complete
zle-line-init() {
  for BUFFER in $lines; do
    CURSOR=$#BUFFER
    print -u3 -r -- $BUFFER
    zle offer-matches
  done
  exit
}
zle -N zle-line-init
