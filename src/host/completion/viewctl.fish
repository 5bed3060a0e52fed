# SPDX-License-Identifier: Apache-2.0
# Completion of viewctl's lines for fish.
function __viewctl_complete
    set -l found (viewctl __complete --line (commandline -cp | string collect) 2>/dev/null)
    if test "$found[1]" = ':files'
        __fish_complete_path (commandline -ct)
    else
        printf '%s\n' $found
    end
end
complete -c viewctl -f -a '(__viewctl_complete)'
