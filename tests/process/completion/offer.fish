# offer.fish SCRIPT LINE...: each LINE, and indented what completion makes of its last word.
source $argv[1]
for line in $argv[2..-1]
    echo $line
    for offered in (complete --do-complete $line)
        printf '\t%s\n' (string split \t -- $offered)[1]
    end
end
