# Completion of `rebate` for fish: the tool itself tells what fits.

function __rebate_complete
    set -l words (commandline -opc) (commandline -ct)
    for line in ($words[1] complete -- $words[2..-1] 2>/dev/null)
        if test "$line" = :files
            __fish_complete_path (string replace -r '^--[^=]*=' '' -- $words[-1])
        else
            echo $line
        end
    end
end

complete -c rebate -f -k -a '(__rebate_complete)'
