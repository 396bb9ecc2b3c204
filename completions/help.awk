# Reads the help of a program and prints what it offers, one thing a line, with tabs between
#   "command", its name,     nothing, what it does
#   "option",  one spelling, its value, what it does
#   "operand", its name,     its value, what it is
# where a value is empty (there is none), "#" (a number), "*" (a text or a file) or the choices.

function choices(type) {
    if (match(type, /\{[^}]*\}/)) {
        type = substr(type, RSTART + 1, RLENGTH - 2)
        gsub(/,/, " ", type)
        return type
    }
    if (type ~ /\|/) {
        gsub(/\|/, " ", type)
        return type
    }
    if (type ~ /^(INT|UINT|FLOAT|NUMBER|SECONDS)/) return "#"
    return "*"
}

function remember(kind, name, value, text) {
    kinds[++count] = kind
    names[count] = name
    values[count] = value
    texts[count] = text
}

/^[A-Za-z ]+:$/ { section = tolower($0); next }

# What does not fit beside a name stands below it.
/^               / {
    sub(/^ +/, "")
    for (n = last + 1; n <= count; ++n) texts[n] = texts[n] == "" ? $0 : texts[n] " " $0
    next
}

section == "subcommands:" && /^  [a-z]/ {
    last = count
    name = $1
    sub(/^ +[^ ]+ +/, "")
    remember("command", name, "", $0)
}

section == "positionals:" && /^  [A-Za-z]/ {
    last = count
    remember("operand", $1, choices($2), substr($0, 31))
}

/^  -/ {
    last = count
    takes = $0 ~ /^  [^ ]+ [^ ]/ && $2 !~ /^(Excludes|Needs|REQUIRED)/
    spellings = split($1, spelling, ",")
    for (n = 1; n <= spellings; ++n) {
        remember("option", spelling[n], takes ? choices($2) : "", substr($0, 31))
    }
}

END {
    for (n = 1; n <= count; ++n) print kinds[n] "\t" names[n] "\t" values[n] "\t" texts[n]
}
