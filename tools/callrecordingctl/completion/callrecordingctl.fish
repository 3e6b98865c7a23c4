# fish completion for callrecordingctl

function __callrecordingctl_candidates
    set -l words (commandline -opc)
    set -l lines (command $words[1] __complete $words[2..-1] (commandline -ct) 2>/dev/null)
    switch "$lines[1]"
        case :files
            __fish_complete_path (commandline -ct)
        case :directories
            __fish_complete_directories (commandline -ct)
        case '*'
            printf '%s\n' $lines
    end
end

complete -c callrecordingctl -f -k -a '(__callrecordingctl_candidates)'
