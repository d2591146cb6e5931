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
    local report="--json --format" texts="--display-name --comment" options i
    local settings="--setting --remove-setting" allowed="--allow-dangling --allow-uncovered"
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
            --format | --order | --weight | --priority | --sender | --envelopes | --samples | --html | --roads) i=$((i + 1)) ;;
            --condition | --add-condition | --remove-condition | --inactivate | --activate) i=$((i + 1)) ;;
            --display-name | --comment | --match-type | --position | --filter | --enable) i=$((i + 1)) ;;
            --overridable | --outcome | --remove-outcome | --setting | --remove-setting) i=$((i + 1)) ;;
            --action-type) i=$((i + 1)) ;;
            --policy | --min-coverage | --against | --changes | --bad-lines) i=$((i + 1)) ;;
            -*) ;;
            *)
                case $command in
                    "" | refs | rule | task | classification) command+=${command:+ }$word ;;
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
            --envelopes | --policy | --changes | --html) _zxpolicy_files && return ;;
            --against)
                if [[ $current == sqlite:* ]]; then _zxpolicy_locations; else _zxpolicy_files; fi
                return
                ;;
            --min-coverage | --bad-lines | --roads) return ;;
            --enable | --overridable) _zxpolicy_offer "true false" && return ;;
            --sender | --receiver | --samples | --display-name | --comment | --match-type | --position) return ;;
            --condition | --add-condition | --remove-condition | --inactivate | --activate | --filter) return ;;
            --outcome | --remove-outcome | --setting | --remove-setting | --action-type) return ;;
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
                report) options+=" --envelopes --html --roads --best --priority --weight" ;;
                tree | *" show") options+=" $report" ;;
                "rule add")
                    options+=" --condition --inactivate --match-type --position --dry-run $texts $allowed $report"
                    ;;
                "rule set")
                    options+=" --add-condition --remove-condition --inactivate --activate --match-type --dry-run"
                    options+=" $texts $allowed $report"
                    ;;
                "rule move" | "task move" | "classification move") options+=" --position --dry-run $report" ;;
                "rule remove") options+=" --recursive --dry-run $report" ;;
                "task add")
                    options+=" --filter --enable --overridable --outcome --setting --position --dry-run $texts $report"
                    ;;
                "task set")
                    options+=" --filter --enable --overridable --outcome --remove-outcome --dry-run"
                    options+=" $texts $settings $report"
                    ;;
                "task remove") options+=" --dry-run $report" ;;
                "classification add") options+=" --action-type --setting --position --dry-run $texts $report" ;;
                "classification set") options+=" --action-type --dry-run $texts $settings $report" ;;
                "classification remove") options+=" --allow-dangling --dry-run $report" ;;
                diff) options+=" --decisions --best --priority --weight --samples $report" ;;
            esac
            _zxpolicy_offer "$options"
            return
        fi
    fi

    case $command in
        "")
            options="apply dump match explain test replay lint report diff tree rule task classification list refs"
            _zxpolicy_offer "$options"
            ;;
        apply | lint | test) ((arguments > 0)) || _zxpolicy_files ;;
        refs) _zxpolicy_offer "list classification" ;;
        list) _zxpolicy_offer "show check add remove import export" ;;
        rule | task | classification) _zxpolicy_offer "show add set move remove" ;;
        diff)
            if ((arguments < 2)); then
                if [[ $current == sqlite:* ]]; then _zxpolicy_locations; else _zxpolicy_files; fi
            fi
            ;;
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
