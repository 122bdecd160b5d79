# Writes a manual page from what a program prints of itself.
#
#     PROGRAM=path awk -v page=FILE -f help.awk FILE.in
#
# A line ".HELP PART [COMMAND]" stands for a part of what the program prints for --help, or for COMMAND --help: "usage",
# "about", "status", which is what follows "Exit status:", "rest", which is what else stands behind the options, or the
# heading of a list, as "Options". All other lines are taken as they are.

function fail(reason) {
    print "help.awk: " reason >"/dev/stderr"
    failed = 1
    exit 1
}

function trim(text) {
    gsub(/^ +| +$/, "", text)
    return text
}

# Reads the help of a command into the parts "COMMAND PART", once.
function read(command,    call, line, part, count) {
    if (command in known) return
    known[command] = 1
    part = "about"
    call = "\"$PROGRAM\" " command " --help"
    while ((call | getline line) > 0) {
        ++count
        if (line ~ /^Usage: /) {
            parts[command, "usage"] = substr(line, 8)
            part = "none"
        } else if (line ~ /^[A-Z][A-Za-z]*:$/) {
            part = substr(line, 1, length(line) - 1)
        } else if (line ~ /^Exit status: /) {
            parts[command, "status"] = substr(line, 14)
            part = "status"
        } else {
            if (part != "about" && part != "rest" && part != "status" && line ~ /^[^ ]/) part = "rest"
            parts[command, part] = parts[command, part] (parts[command, part] == "" ? "" : "\n") line
        }
    }
    if (close(call) != 0 || count == 0) fail("the program has no help for '" command "'")
}

function plain(text) {
    gsub(/\\/, "\\e", text)
    gsub(/--/, "\\-\\-", text)
    sub(/^[.']/, "\\\\\\&&", text)
    return text
}

function literal(text) {
    gsub(/\\/, "\\e", text)
    gsub(/-/, "\\-", text)
    return text
}

# Lines that begin with blanks are columns, and stay as they are.
function paragraphs(text,    lines, count, i, empty, columns) {
    count = split(text, lines, "\n")
    for (i = 1; i <= count; ++i) {
        if (lines[i] == "") {
            empty = 1
            continue
        }
        if (columns && lines[i] !~ /^ /) add(".EE\n.PP")
        else if (!columns && lines[i] ~ /^ /) add(".PP\n.EX")
        else if (empty) add(".PP")
        columns = lines[i] ~ /^ /
        empty = 0
        add(plain(lines[i]))
    }
    if (columns) add(".EE")
}

function add(line) { out = out line "\n" }

# An entry's names, its argument, and what the program says of it: "--jobs N [1] Needs: --run", "Personas at a time".
function entry(left, text,    words, count, i, names, argument, tail, kind) {
    gsub(/,/, ", ", left)
    count = split(left, words, / +/)
    for (i = 1; i <= count; ++i) {
        if (words[i] ~ /^(Needs|Excludes):$/) {
            kind = words[i]
            tail = tail (tail == "" ? "" : ". ") (kind == "Needs:" ? "Needs" : "Not with")
        } else if (kind != "") tail = tail " " words[i]
        else if (words[i] ~ /^\[.*\]$/) tail = "By default " substr(words[i], 2, length(words[i]) - 2)
        else if (words[i] == "REQUIRED") tail = "Required"
        else if (words[i] == "...") continue
        else if (i == 1 || words[i] ~ /^-/) names = names (names == "" ? "" : " ") "\\fB" literal(words[i]) "\\fR"
        else argument = argument " \\fI" literal(words[i]) "\\fR"
    }
    gsub(/,\\fR/, "\\fR,", names)
    add(".TP")
    add(names argument)
    add(plain(text) "." (tail == "" ? "" : "\n" plain(tail) "."))
}

# The text begins in the column 31, on a line of its own where what it is about takes more than that.
function list(text,    lines, count, i, left) {
    count = split(text, lines, "\n")
    for (i = 1; i <= count; ++i) {
        if (trim(lines[i]) == "") continue
        if (i < count && substr(lines[i + 1], 1, 30) ~ /^ +$/) {
            left = trim(lines[i])
            entry(left, trim(lines[++i]))
        } else entry(trim(substr(lines[i], 1, 30)), trim(substr(lines[i], 31)))
    }
}

$1 == ".HELP" {
    read($3)
    if (!(($3, $2) in parts)) fail("the help of '" $3 "' has no part '" $2 "'")
    if ($2 == "usage") add("\\fB" literal(parts[$3, $2]) "\\fR")
    else if ($2 ~ /^[A-Z]/) list(parts[$3, $2])
    else paragraphs(parts[$3, $2])
    next
}

{ add($0) }

END { if (!failed) printf "%s", out >page }
