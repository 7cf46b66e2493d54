# What Doxygen is given of a file (see Doxyfile.in), line by line, so that its numbers stay right. In comments of headers,
# grammars ("Via = ...") stand as they are written. Headings of pages get the names by which links above
# them in their page call them.

function balance(text, opened) {
    opened = gsub(/\(/, "(", text)
    return opened - gsub(/\)/, ")", text)
}

# The line with the end of a grammar behind it, inside the comment.
function ended(line) {
    return sub(/ *\*\//, " @endverbatim */", line) ? line : line " @endverbatim"
}

FILENAME ~ /\.md$/ {
    if ($0 ~ /^```/) {
        in_code = !in_code
    } else if (!in_code && $0 ~ /^## /) {
        name = tolower(substr($0, 4))
        gsub(/[^a-z0-9 -]/, "", name)
        gsub(/ /, "-", name)
        $0 = $0 (name in linked ? " {#" name "}" : "")
    } else {
        rest = $0
        while (match(rest, /\]\(#[^)]*\)/)) {
            linked[substr(rest, RSTART + 3, RLENGTH - 4)]
            rest = substr(rest, RSTART + RLENGTH)
        }
    }
    print
    next
}

/\/\*\*/ {
    in_comment = 1
}

in_comment && !depth && /^ *[A-Za-z][A-Za-z-]* = / {
    depth = balance($0)
    $0 = "@verbatim " (depth ? $0 : ended($0))
    was_grammar = 1
}

in_comment && depth && !was_grammar {
    depth += balance($0)
    if (!depth) {
        $0 = ended($0)
    }
}

{
    was_grammar = 0
    if ($0 ~ /\*\//) {
        in_comment = depth = 0
    }
    print
}
