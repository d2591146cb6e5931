# Completion of zxpolicy's command line in bash.

# The words of the line up to the cursor, in `words`. Bash takes a colon and an equals sign for words of their own, which
# they are not in sqlite:PATH and --store=LOCATION.
_zxpolicy_words() {
    local word line=$COMP_LINE i
    words=()
    for ((i = 0; i <= COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if ((i > 0)) && [[ -n $line && $line != [[:blank:]]* ]]; then
            words[${#words[@]} - 1]+=$word
        else
            line=${line#"${line%%[![:blank:]]*}"}
            words+=("$word")
        fi
        line=${line#"$word"}
    done
}

# Offers what the program $1 with the store $2 knows as address lists. A store that is not there is not made.
_zxpolicy_lists() {
    local name
    while IFS= read -r name; do
        [[ $name != "$current"* ]] || COMPREPLY+=("$(printf '%q' "$name")")
    done < <("$1" --store "$2" list --names 2>/dev/null)
}

_zxpolicy_offer() {
    local IFS=$' \t\n'
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
}

_zxpolicy_files() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
}

_zxpolicy_locations() {
    if [[ $current == sqlite:* ]]; then
        local path=${current#sqlite:}
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$path")
        # What stands before the colon is on the line already, where bash splits there.
        [[ $COMP_WORDBREAKS == *:* ]] || COMPREPLY=("${COMPREPLY[@]/#/sqlite:}")
    else
        compopt -o nospace 2>/dev/null
        if [[ $COMP_WORDBREAKS == *:* ]]; then
            mapfile -t COMPREPLY < <(compgen -W "sqlite: memory:" -- "$current")
        else
            _zxpolicy_offer "sqlite: memory:"
        fi
    fi
}

_zxpolicy() {
    local words current previous word command="" store=${ZXPOLICY_STORE:-sqlite:policy.db} arguments=0 onlyArguments=0
    local report="--json --format" options i
    COMPREPLY=()
    _zxpolicy_words
    current=${words[${#words[@]} - 1]}
    previous=${words[${#words[@]} - 2]}

    # The command so far, and how many arguments it has.
    for ((i = 1; i < ${#words[@]} - 1; i++)); do
        word=${words[i]}
        if ((onlyArguments)); then
            arguments=$((arguments + 1))
            continue
        fi
        case $word in
            --) onlyArguments=1 ;;
            --store) store=${words[++i]} ;;
            --store=*) store=${word#--store=} ;;
            --format | --order | --weight | --priority | --sender | --envelopes) i=$((i + 1)) ;;
            --policy | --min-coverage | --against | --changes | --samples | --bad-lines) i=$((i + 1)) ;;
            -*) ;;
            *)
                case $command in
                    "" | refs) command+=${command:+ }$word ;;
                    list)
                        command+=" $word"
                        ;;
                    *) arguments=$((arguments + 1)) ;;
                esac
                ;;
        esac
    done

    if ! ((onlyArguments)); then
        case $previous in
            --store) _zxpolicy_locations && return ;;
            --format)
                if [[ $command == "list import" ]]; then _zxpolicy_offer "plain directory"; else _zxpolicy_offer "text json"; fi
                return
                ;;
            --order) _zxpolicy_offer "user ascending descending" && return ;;
            --weight) _zxpolicy_offer "domain name" && return ;;
            --priority) _zxpolicy_offer "total sender receiver" && return ;;
            --envelopes | --policy | --changes) _zxpolicy_files && return ;;
            --against)
                if [[ $current == sqlite:* ]]; then _zxpolicy_locations; else _zxpolicy_files; fi
                return
                ;;
            --sender | --receiver | --min-coverage | --samples | --bad-lines) return ;;
        esac
        if [[ $current == --store=* ]]; then
            current=${current#--store=}
            _zxpolicy_locations
            return
        fi
        if [[ $current == -* ]]; then
            options="--store --help"
            case $command in
                "") options+=" --version" ;;
                apply) options+=" --dry-run --allow-dangling $report" ;;
                dump) options+=" --with-secrets" ;;
                explain) options+=" --sender --receiver --best --priority --weight $report" ;;
                match) options+=" --sender --receiver --envelopes --best --priority --weight $report" ;;
                "refs list" | "refs classification") options+=" $report" ;;
                lint) options+=" --priority --weight --strict $report" ;;
                list) options+=" --names $report" ;;
                "list show") options+=" --order $report" ;;
                "list check") options+=" --weight $report" ;;
                "list add" | "list remove") options+=" --dry-run $report" ;;
                "list import") options+=" --format --replace --create --dry-run --json" ;;
                test) options+=" --policy --min-coverage $report" ;;
                replay)
                    options+=" --envelopes --against --changes --samples --bad-lines --best --priority --weight $report"
                    ;;
            esac
            _zxpolicy_offer "$options"
            return
        fi
    fi

    case $command in
        "") _zxpolicy_offer "apply dump match explain test replay refs lint list" ;;
        apply | lint | test) ((arguments > 0)) || _zxpolicy_files ;;
        refs) _zxpolicy_offer "list classification" ;;
        list) _zxpolicy_offer "show check add remove import export" ;;
        "refs list" | "list "*)
            if ((arguments == 0)); then
                _zxpolicy_lists "${words[0]}" "$store"
            elif ((arguments == 1)) && [[ $command == "list import" || $command == "list export" ]]; then
                _zxpolicy_files
            fi
            ;;
    esac
}

complete -F _zxpolicy zxpolicy
