# Reads an Android.bp in bpfmt's form. To be sourced.

# blueprint FILE MODULE PROPERTY: the property's values, one a line; of a module's defaults those first.
blueprint() {
    awk -v module="$2" -v property="$3" '
        function strings(text) {
            while (match(text, /"[^"]*"/)) {
                print substr(text, RSTART + 1, RLENGTH - 2)
                text = substr(text, RSTART + RLENGTH)
            }
        }
        /^[a-z_]+ \{$/ { name = ""; within = 0 }
        /^    name: "/ { split($0, part, "\""); name = part[2] }
        name == module && /^    [a-z_]+: / {
            within = index($0, "    " property ": ") == 1
            if (within && /: (true|false),$/) { sub(/,$/, ""); print $2 }
        }
        name == module && within { strings($0) }
    ' "$1"
}

# blueprint_of FILE MODULE PROPERTY: the same, with what the module takes over from its defaults.
blueprint_of() {
    local defaults
    for defaults in $(blueprint "$1" "$2" defaults); do blueprint_of "$1" "$defaults" "$3"; done
    blueprint "$1" "$2" "$3"
}
