# Bash completion for ntf: commands, options, their values, and files by suffix.

# Offers folders, and files with one of the suffixes.
_ntf_files() {
  local name path suffix
  compopt -o filenames 2>/dev/null
  while IFS= read -r name; do
    path=${name/#\~\//$HOME/}
    if [[ -d $path ]]; then COMPREPLY+=("$name"); fi
    for suffix in "$@"; do
      if [[ -f $path && ${name,,} == *."$suffix" ]]; then COMPREPLY+=("$name"); fi
    done
  done < <(compgen -f -- "$word")
}

_ntf_words() { mapfile -t COMPREPLY < <(compgen -W "$*" -- "$word"); }

# Completes the value of an option. Fails if the previous word is not an option with a value.
_ntf_value() {
  case $command:$before in
    render:--depth) _ntf_words 8 24 ;;
    render:-o | render:--output) _ntf_files png ppm ;;
    extract:-o | extract:--output) _ntf_files ;;
    export:-o | export:--output) _ntf_files tif tiff ;;
    *:-o | *:--output) _ntf_files ntf nsf ;;
    create:--image | append:--image) _ntf_files png ppm jpg jpeg ;;
    create:--graphic | append:--graphic) _ntf_files cgm ;;
    create:--text | append:--text) _ntf_files txt ;;
    *:--security) _ntf_words U R C S T ;;
    *:--image | *:--graphic | *:--text | *:--data-extension | *:--title | *:--origin | *:--background | *:--quality) ;;
    render:--compress) _ntf_words {0..9} ;;
    *:--box | *:--at | *:--level | *:--attach | *:--bands) ;;
    render:--stretch) _ntf_words percent:2,98 minmax none ;;
    export:--compress) _ntf_words none deflate ;;
    *) return 1 ;;
  esac
}

_ntf() {
  local segments='--image --quality --graphic --box --at --level --attach --text'
  local building="--output --force --title --security --origin --background $segments"
  local -A options=(
    [info]='--json --strict'
    [render]='--output --force --strict --image --graphic --stretch --bands --keep-going --compress --depth --fixed-canvas
      --tone-check --vector-render --padded'
    [text]='--strict'
    [extract]='--output --force --strict --image --graphic --text --data-extension'
    [copy]='--force --strict'
    [check]='--json --strict'
    [export]='--output --force --image --bands --compress'
    [create]=$building
    [append]=$building
    [set]='--output --force --image --graphic --text'
  )
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _ntf_words "${!options[@]}" --help --help-all --version
  elif _ntf_value; then
    :
  elif [[ $word == -* ]]; then
    _ntf_words "${options[$command]}" --help --version
  elif [[ $command != create ]]; then
    _ntf_files ntf nsf
  fi
}

complete -F _ntf ntf
