# bash completion for vexa                                 -*- shell-script -*-
# The first word is a command or a formula file (.frm, in any case); after a
# command that reads a file, one file name, which vexa takes whole; after
# "debug", on or off. Expressions and numbers get nothing.

_vexa()
{
    local cur prev words cword
    _init_completion || return

    if ((cword == 1)); then
        COMPREPLY=($(compgen -W 'help debug exit quit clear reset formula hex
            unhex md5 sha1 sha256 escape base64 unbase64 url_encode url_decode
            comma localtime gmtime uuid bench verify' -- "$cur"))
        _filedir '[Ff][Rr][Mm]'
    elif ((cword == 2)); then
        case $prev in
            md5 | sha1 | sha256 | escape | base64 | unbase64 | url_encode | url_decode)
                _filedir
                ;;
            debug)
                COMPREPLY=($(compgen -W 'on off' -- "$cur"))
                ;;
        esac
    fi
} &&
    complete -F _vexa vexa

# ex: filetype=sh
