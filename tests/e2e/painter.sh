#!/usr/bin/env bash
# Runs in a terminal: each press of a button gives it the next colour, and what is typed goes to a file: painter.sh FOLDER
LC_ALL=C
folder=$1
colours=('#c03030' '#30a040' '#3050d0' '#c0a020')
next=0

stty raw -echo
exec < <(exec cat) # `read` would set up a terminal anew, so that Ctrl-C ends this
printf '\e[?1000h\e[?25l' # reports of buttons, and no text cursor
: >"$folder/ready"

while IFS= read -r -d '' -n 1 byte; do
    if [[ $byte == $'\e' ]]; then
        IFS= read -r -d '' -n 5 rest # "[M", the button, its place
        if [[ ${rest:2:1} == '#' ]]; then
            echo "release $EPOCHREALTIME" >>"$folder/buttons"
        else
            printf '\e]11;%s\a' "${colours[next++ % 4]}"
            echo "press $EPOCHREALTIME" >>"$folder/buttons"
        fi
    else
        printf '%s' "$byte" >>"$folder/typed"
    fi
done
