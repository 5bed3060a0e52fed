#compdef viewctl
# SPDX-License-Identifier: Apache-2.0
# Completion of viewctl's lines for zsh: source <(viewctl completion zsh), or a file _viewctl in a folder of fpath.
_viewctl() {
  local line candidate
  local -a candidates folders
  while IFS= read -r line; do
    candidate=${line%%$'\t'*}
    if [[ $candidate == :files ]]; then
      _files
      return
    elif [[ $candidate == */ ]]; then
      folders+=("$candidate")
    else
      candidates+=("$candidate")
    fi
  done < <(viewctl __complete -- "${(@Q)words[2,CURRENT]}" 2>/dev/null)
  compadd -S '' -a folders
  compadd -a candidates
}
if [[ $funcstack[1] == _viewctl ]]; then
  _viewctl "$@"
else
  compdef _viewctl viewctl
fi
