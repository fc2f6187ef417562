# Doxygen's input filter for the headers: their opening `//` block, which says what the header is
# for, becomes a file comment (the page's description, its first sentence the brief). The rest of
# the header passes unchanged, and line numbers stay as they were, so warnings point at the right
# line.
#
# The comments are written as plain text, not for Doxygen, so the block is escaped: outside `code`
# and "quoted" stretches (which Doxygen shows as they are) the characters that would start a
# command, a tag or an entity get a backslash; inside code a double quote becomes &quot;, the one
# thing that breaks a code span.

function escaped(text,    out, i, c, state) {
    out = ""
    state = ""
    for (i = 1; i <= length(text); i++) {
        c = substr(text, i, 1)
        if (state == "`") {
            if (c == "`") state = ""
            else if (c == "\"") c = "&quot;"
        } else if (state == "\"") {
            if (c == "\"") state = ""
        } else if (c == "`" || c == "\"") {
            state = c
        } else if (index("\\<>@&#%$", c) > 0) {
            c = "\\" c
        } else if (c == "*" && substr(text, i - 1, 1) == "/") {
            c = "\\*"
        }
        out = out c
    }
    return out
}

function flush(    i) {
    for (i = 1; i <= lines; i++)
        print (i == 1 ? "/** " : " * ") escaped(block[i]) (i == lines ? " @file */" : "")
    lines = 0
}

NR == 1 && /^\/\// { opening = 1 }
opening && /^\/\// {
    text = $0
    sub(/^\/\/ ?/, "", text)
    block[++lines] = text
    next
}
opening {
    opening = 0
    flush()
}
{ print }
END { flush() }
