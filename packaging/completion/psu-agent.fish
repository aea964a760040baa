# Fish completion of psu-agent, which itself says what may stand at the end of a command line.
function __psu_agent
    set -l words (commandline --tokenize --cut-at-cursor --current-process)
    set -l word (commandline --current-token --cut-at-cursor)
    $words[1] complete -- $words[2..-1] "$word" 2>/dev/null | while read -l --delimiter \t offered before
        switch $offered
            case :files
                printf '%s\n' "$before"(__fish_complete_path (string sub --start (math 1 + (string length -- "$before")) -- "$word"))
            case :folders
                printf '%s\n' "$before"(__fish_complete_directories (string sub --start (math 1 + (string length -- "$before")) -- "$word") "")
            case '*'
                printf '%s\t%s\n' $offered $before
        end
    end
end
complete --command psu-agent --no-files --arguments '(__psu_agent)'
