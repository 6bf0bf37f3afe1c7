# Completion of `rebate` for bash: the tool itself tells what fits.

_rebate() {
  local -a words=()
  local at word current reply
  # Bash takes `=` for a word of its own.
  for ((at = 1; at <= COMP_CWORD; ++at)); do
    word=${COMP_WORDS[at]}
    if ((${#words[@]})) && [[ $word == =* || ${words[-1]} == *= ]]; then
      words[-1]+=$word
    else
      words+=("$word")
    fi
  done
  current=${words[-1]}
  # Words come as they are typed, with their quotes.
  for at in "${!words[@]}"; do
    word=${words[at]}
    case $word in
      \'*\' | \"*\") word=${word:1:${#word}-2} ;;
      \'* | \"*) word=${word:1} ;;
      *) word=${word//\\/} ;;
    esac
    [[ $word != '~/'* ]] || word=$HOME/${word:2}
    words[at]=$word
  done

  COMPREPLY=()
  while IFS=$'\t' read -r reply _; do
    if [[ $reply == :files ]]; then
      compopt -o filenames 2>/dev/null
      word=${COMP_WORDS[COMP_CWORD]}
      [[ $word != = ]] || word=
      while IFS= read -r reply; do
        [[ -z $reply ]] || COMPREPLY+=("$reply")
      done <<<"$(compgen -f -- "$word")"
    elif [[ -n $reply ]]; then
      # Only what stands behind the `=` is replaced.
      [[ $current != --*=* || $COMP_WORDBREAKS != *=* ]] || reply=${reply#*=}
      COMPREPLY+=("$reply")
    fi
  done <<<"$("${COMP_WORDS[0]}" complete -- "${words[@]}" 2>/dev/null)"
}

complete -o nosort -F _rebate rebate
