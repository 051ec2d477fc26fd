#include "agent/ShellCompletionEngine.h"

namespace morvelin {

namespace {

constexpr std::string_view kBash = R"script(
# The words up to the cursor. Bash parts words at "=" too; a part that follows without a blank belongs to the word before.
_morvelin_words() {
    local line=${COMP_LINE:0:COMP_POINT} blanks word i
    words=()
    for ((i = 0; i <= COMP_CWORD; i++)); do
        blanks=${line%%[![:space:]]*}
        line=${line#"$blanks"}
        word=${COMP_WORDS[i]}
        ((i < COMP_CWORD)) || word=$line
        if [[ -z $blanks && ${#words[@]} -gt 0 ]]; then
            words[${#words[@]} - 1]+=$word
        else
            words+=("$word")
        fi
        line=${line#"$word"}
    done
}

_morvelin() {
    local -a words
    _morvelin_words
    local last=$((${#words[@]} - 1))
    local cur=${words[last]} path= tool= option= before= count=1 place word rest i
    for ((i = 1; i < last; i++)); do
        word=${words[i]}
        if [[ -n $option ]]; then
            option=
        elif [[ $word == -* ]]; then
            _morvelin_table "value:$path $word" >/dev/null && option=$word
        elif _morvelin_table "command:${path:+$path }$word" >/dev/null; then
            path=${path:+$path }$word
        else
            ((count++ > 1)) || ! _morvelin_table "tool:$path" >/dev/null || tool=$word
        fi
    done

    if [[ -n $option ]]; then
        place="value:$path $option"
    elif [[ $cur == -*=* ]]; then
        place="value:$path ${cur%%=*}" before=${cur%%=*}=
    elif [[ $cur == -* ]]; then
        place="options:$path"
    elif [[ -n $tool && $cur == *=* ]]; then
        place="argument:$tool ${cur%%=*}" before=${cur%%=*}=
    elif [[ -n $tool ]]; then
        place="arguments:$tool"
    elif _morvelin_table "commands:$path" >/dev/null; then
        place="commands:$path"
    else
        place="operand:$path $count"
    fi
    cur=${cur#"$before"}
    [[ $COMP_WORDBREAKS != *=* ]] || before=

    COMPREPLY=()
    while IFS=$'\t' read -r word rest; do
        if [[ $word == @files ]]; then
            compopt -o default
        elif [[ $word == "$cur"* && " ${words[*]:1}" != *" ${word%=}="* ]]; then
            COMPREPLY+=("$before$word")
            [[ $word != *= ]] || compopt -o nospace
        fi
    done < <(_morvelin_table "$place")
}

complete -F _morvelin morvelin
)script";

constexpr std::string_view kZsh = R"script(
_morvelin() {
    # "path" itself is the shell's own.
    local cur=$PREFIX path_= tool= option= place word line
    local -i count=1
    local -a candidates
    for word in "${(@Q)words[2,CURRENT-1]}"; do
        if [[ -n $option ]]; then
            option=
        elif [[ $word == -* ]]; then
            _morvelin_table "value:$path_ $word" >/dev/null && option=$word
        elif _morvelin_table "command:${path_:+$path_ }$word" >/dev/null; then
            path_=${path_:+$path_ }$word
        else
            ((count++ > 1)) || ! _morvelin_table "tool:$path_" >/dev/null || tool=$word
        fi
    done

    if [[ -n $option ]]; then
        place="value:$path_ $option"
    elif [[ $cur == -*=* ]]; then
        place="value:$path_ ${cur%%=*}"
    elif [[ $cur == -* ]]; then
        place="options:$path_"
    elif [[ -n $tool && $cur == *=* ]]; then
        place="argument:$tool ${cur%%=*}"
    elif [[ -n $tool ]]; then
        place="arguments:$tool"
    elif _morvelin_table "commands:$path_" >/dev/null; then
        place="commands:$path_"
    else
        place="operand:$path_ $count"
    fi
    [[ $place != argument:* && $cur != -*=* ]] || compset -P 1 '*='

    for line in "${(@f)$(_morvelin_table "$place")}"; do
        word=${line%%$'\t'*}
        if [[ $word == @files ]]; then
            _files
            return
        fi
        [[ -z $word || -n ${(M)words[2,CURRENT-1]:#${word%=}=*} ]] || candidates+=("$word:${line#*$'\t'}")
    done
    ((${#candidates})) || return 1
    if [[ $place == arguments:* ]]; then
        _describe argument candidates -S ''
    else
        _describe word candidates
    fi
}

# Read by the shell's own search for completions, or by hand.
if [[ ${funcstack[1]} == _morvelin ]]; then
    _morvelin "$@"
else
    compdef _morvelin morvelin
fi
)script";

constexpr std::string_view kFish = R"script(
function __morvelin_place --description 'The place of the table that the words before the cursor lead to'
    set --local cur (commandline --current-token)
    set --local path ''
    set --local tool ''
    set --local option ''
    set --local count 1
    for word in (commandline --tokenize --cut-at-cursor --current-process)[2..]
        set --local inner (string trim -- "$path $word")
        if test -n "$option"
            set option ''
        else if string match --quiet -- '-*' $word
            __morvelin_table "value:$path $word" >/dev/null; and set option $word
        else if __morvelin_table "command:$inner" >/dev/null
            set path $inner
        else
            test $count -eq 1; and __morvelin_table "tool:$path" >/dev/null; and set tool $word
            set count (math $count + 1)
        end
    end

    set --local name (string split --max 1 = -- $cur)[1]
    if test -n "$option"
        echo "value:$path $option"
    else if string match --quiet -- '-*=*' $cur
        echo "value:$path $name"
    else if string match --quiet -- '-*' $cur
        echo "options:$path"
    else if test -n "$tool"; and string match --quiet -- '*=*' $cur
        echo "argument:$tool $name"
    else if test -n "$tool"
        echo "arguments:$tool"
    else if __morvelin_table "commands:$path" >/dev/null
        echo "commands:$path"
    else
        echo "operand:$path $count"
    end
end

function __morvelin_complete
    set --local cur (commandline --current-token)
    set --local given (commandline --tokenize --cut-at-cursor --current-process)
    set --local place (__morvelin_place)
    set --local before ''
    if string match --quiet -- 'argument:*' $place; or string match --quiet -- '-*=*' $cur
        set before (string match --regex -- '^[^=]*=' $cur)
    end
    for line in (__morvelin_table $place)
        if string match --quiet -- '@files*' $line
            for file in (__fish_complete_path (string replace -- "$before" '' $cur))
                echo $before$file
            end
        else
            set --local name (string match --regex -- '^[^\t]*=' $line)
            if test -z "$name"; or not string match --quiet -- "$name*" $given
                echo $before$line
            end
        end
    end
end

complete --command morvelin --no-files --arguments '(__morvelin_complete)'
)script";

} // namespace

std::string_view completionEngine(Shell shell) {
    switch (shell) {
    case Shell::Bash: return kBash;
    case Shell::Zsh: return kZsh;
    case Shell::Fish: return kFish;
    }
    return {};
}

} // namespace morvelin
