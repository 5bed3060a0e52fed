# SPDX-License-Identifier: Apache-2.0
# Completion of viewctl's lines for bash: source <(viewctl completion bash)
_viewctl() {
  local current=${COMP_WORDS[COMP_CWORD]} candidate
  COMPREPLY=()
  while IFS=$'\t' read -r candidate _; do
    if [[ $candidate == :files ]]; then
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
    fi
    [[ $candidate == */ ]] && compopt -o nospace 2>/dev/null
    # Within quotes the shell quotes by itself.
    [[ $current == [\"\']* ]] || printf -v candidate %q "$candidate"
    COMPREPLY+=("$candidate")
  done < <(viewctl __complete --line "${COMP_LINE:0:COMP_POINT}" 2>/dev/null)
}
complete -F _viewctl viewctl
