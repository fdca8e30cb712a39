# bash completion for tarvoke-play                         -*- shell-script -*-

_tarvoke_play()
{
    local cur prev words cword split
    _init_completion -s || return

    case $prev in
        --percent | --repeat)
            return
            ;;
        --screen)
            COMPREPLY=($(compgen -W '1920x1080 1280x1024 1024x768' -- "$cur"))
            return
            ;;
        --screen-image)
            _filedir '@(png|bmp|jpg|jpeg|gif|PNG|BMP|JPG|JPEG|GIF)'
            return
            ;;
        --screenshot)
            _filedir '@(png|PNG)'
            return
            ;;
        --record)
            _filedir tk
            return
            ;;
        --wm)
            COMPREPLY=($(compgen -c -- "$cur"))
            return
            ;;
        --headless)
            # --headless=WxH; after a plain --headless comes the script.
            if $split; then
                COMPREPLY=($(compgen -W '1920x1080 1280x1024 1024x768' -- "$cur"))
                return
            fi
            ;;
    esac
    $split && return

    if [[ $cur == -* ]]; then
        # The options as the player's own --help lists them.
        COMPREPLY=($(compgen -W '$(_parse_help "$1")' -- "$cur"))
        [[ ${COMPREPLY-} == *= ]] && compopt -o nospace
        return
    fi
    _filedir tk
} &&
    complete -F _tarvoke_play tarvoke-play

# ex: filetype=sh
